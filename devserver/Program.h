#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace devserver {

/// The whole program, given its arguments without its name. Serves until SIGINT or SIGTERM.
/// Returns 0, 1 when the server cannot be started or its data not be read, 2 when the command
/// line is wrong; what went wrong is one line on `err`.
int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace devserver
