#pragma once

/// The whole run: sets up the catalogue and the log, chooses the operation from the command line,
/// checks and executes it, shows every failure, and logs the result. The one place where the
/// failures of the framework and the operations are caught.
///
/// Any other exception leaves it and ends the process through the termination handler:
/// `std::logic_error` when no primary server is configured as an abort, `std::bad_alloc` with
/// status 20 and its text (driver/Termination.h).
///
/// @return 0; 144 for a wrong command line; the status of a run-time failure; else what the
///         operation returned. 7651 in place of 0 when standard output could not be written.
int execute_akhostmgmt(int argc, char** argv);

/// The same with the debug log below `directory`. The log is opened once in a process: it is the
/// folder of the first run that counts.
int execute_akhostmgmt_in(const char* directory, int argc, char** argv);

/// The exit status for a process, of which the system keeps 8 bits: the whole number, but 255 where
/// those bits would be 0 for a failure.
int shellStatus(int status);
