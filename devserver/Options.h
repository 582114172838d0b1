#pragma once

#include "devserver/Faults.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace devserver {

/// The port that the tool always uses.
inline constexpr int toolPort = 1556;
inline constexpr int largestPort = 65535;

/// What the command line asks for.
struct Options {
    /// What is to be done; all but `serve` end at once.
    enum class Task { serve, initialise, audit, help, version };

    Task task = Task::serve;
    std::string root;
    std::string listen = "127.0.0.1";
    int port = toolPort;
    std::vector<std::string> names;
    std::optional<std::size_t> hosts;
    std::string readyFile;
    std::vector<FaultRule> faults;
};

/// Reads the arguments without the program's name; a Failure says what is wrong with them.
Options parseOptions(const std::vector<std::string>& arguments);

/// The text of --help.
std::string helpText();

/// Whether a text is an IP address.
bool isNumericAddress(const std::string& text);

/// Whether an address is one of the local host alone.
bool isLoopback(const std::string& address);

}  // namespace devserver
