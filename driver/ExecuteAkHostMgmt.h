#pragma once

/// Where the debug log is, in the subdirectory "admin".
inline constexpr const char* defaultLogDirectory = "/usr/zelvik/arkeon/logs";

/// The complete run: sets up the catalogue and the log, chooses the operation from the command
/// line, checks and executes it, shows every failure, and logs the result. The only place where the
/// failures of the framework and the operations are caught.
///
/// Every other exception leaves it: `std::logic_error` if no primary server is configured, which
/// nothing catches, and `std::bad_alloc`.
///
/// @return 0; 144 for a wrong command line; the status of a run-time failure; otherwise what the
///         operation returned. 7651 instead of 0 if standard output could not be written.
[[nodiscard]] int execute_akhostmgmt(int argc, char** argv);

/// The same with the debug log below `logDirectory`. A process opens the log once: the directory of
/// the first run counts.
[[nodiscard]] int execute_akhostmgmt_in(const char* logDirectory, int argc, char** argv);

/// The exit status for a process: the complete status, but 255 if its low 8 bits, which are all
/// that a shell sees, would be 0 for a failure.
int shellStatus(int status);

/// Runs the program as a process. Out of memory (`std::bad_alloc`) prints one line on standard
/// error and returns 20.
/// @return the exit status
[[nodiscard]] int runProcess(const char* logDirectory, int argc, char** argv);

/// Prints the help of the program: the synopses of all operations and what the program is for.
void printHelp();
