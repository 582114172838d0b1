#pragma once

#include <ctime>
#include <initializer_list>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace arkeon {

/// No text of a line is longer, in bytes before they are made visible.
inline constexpr std::size_t longestLogText = std::size_t{64} * 1024;

/// What stands before the text of a line.
struct LogStamp {
    std::timespec time;
    pid_t process;
    int level;
    std::string_view name;
};

/// "2026-11-21T08:15:30.123+0100 PID LEVEL NAME: text" with its newline. The pieces are one text,
/// of which no letter reaches over two; only what fits is copied.
std::string logLine(const LogStamp& stamp, std::initializer_list<std::string_view> pieces);

/// The day of a log file's name, "20261121", in local time.
std::string logDay(std::time_t time);

}  // namespace arkeon
