#pragma once

#include <initializer_list>
#include <string_view>

/// The debug log: one file a day, one line a call, safe for several processes at once.
///
/// A line is `2026-11-21T08:15:30.123+0100 PID LEVEL NAME: text` and reaches the file in a single
/// write(2). Control characters of the text are written as `\n`, `\t` or `\xHH`, so that no text
/// can forge a line; one final newline is dropped; a text over 64 KiB is cut and the line says how
/// long it was.

/// The levels of lines: 2 for what happens, 16 for what fails.
namespace arkeon::logLevel {

inline constexpr int ordinary = 2;
inline constexpr int failure = 16;

}  // namespace arkeon::logLevel

/// Opens `root/directory/NAME.YYYYMMDD.log` (local date) for appending, creating it with `mode`
/// less the umask. Anything but a regular file with a single link is rejected without blocking: a
/// symbolic link, a hard link, a FIFO, a device.
/// @return 0 or more on success; -1 on failure, with the errno value in `*status`
int open_debug_log(
    const char* root, const char* directory, const char* name, unsigned mode, int* status);

/// Appends one line to the log that was opened last, also after `close_debug_log`. Does nothing
/// when none was ever opened. A log that cannot be written changes nothing for the caller.
/// In `text` and `name` null counts as empty.
void logmsg(int level, const char* text, const char* name);

/// The same for a text in parts, so that a large text is not concatenated only to be cut.
void logmsg(int level, std::initializer_list<std::string_view> parts, std::string_view name);

/// Releases the log file; a later `logmsg` finds it again by its path.
void close_debug_log();
