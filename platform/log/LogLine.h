#pragma once

#include <ctime>
#include <initializer_list>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace arkeon {

/// Maximum text of a line, in bytes before escaping.
inline constexpr std::size_t maxLogText = std::size_t{64} * 1024;

/// The fields before a line's text.
struct LogStamp {
    std::timespec time;
    pid_t process;
    int level;
    std::string_view name;
};

/// "2026-11-21T08:15:30.123+0100 PID LEVEL NAME: text" with its newline. `parts` are
/// concatenated; no UTF-8 character may span two of them. Only what fits is copied.
std::string logLine(const LogStamp& stamp, std::initializer_list<std::string_view> parts);

/// The day of a log file's name, "20261121", in local time.
std::string logDay(std::time_t time);

}  // namespace arkeon
