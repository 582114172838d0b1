#pragma once

namespace arkeon {

/// The text for a run that has no memory to go on with, in English: a translation takes memory.
inline constexpr const char* memoryShortageText =
    "There is not enough memory; check whether the change was made before trying again.";

/// Writes out what standard output still holds, then status 20 with its text to standard error.
/// Takes no memory.
void showMemoryShortage();

/// Shows it, logs it, and ends the process with status 20 at once. For code that cannot go on
/// without memory and through which no exception can leave.
[[noreturn]] void endWithoutMemory();

}  // namespace arkeon
