#pragma once

#include <functional>
#include <string>

namespace fuzz {

/// What a piece of code wrote to the standard streams.
struct Output {
    std::string out;
    std::string err;
};

/// Runs `code` with files in memory as standard streams. What a sanitizer has to say meanwhile goes
/// where standard error was.
Output outputOf(const std::function<void()>& code);

}  // namespace fuzz
