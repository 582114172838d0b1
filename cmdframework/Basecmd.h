#pragma once

#include "cmdframework/Argscmd.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Parameterscmd.h"

#include <cstdint>
#include <string>

/// A command: its name, its command line, the options it accepts, and the checks that every command
/// makes first. The driver calls `checkArguments()` and then `execute()`.
class CBasecmd {
public:
    /// @throws CRuntimecmd code 3 (null `table`) or 2 (null `newName`)
    CBasecmd(const char* newName, CArgscmd newArgs, const PARAMETERS* table, unsigned long count);

    /// A command without options.
    CBasecmd(const char* newName, CArgscmd newArgs);

    CBasecmd(const CBasecmd&) = delete;
    CBasecmd& operator=(const CBasecmd&) = delete;
    virtual ~CBasecmd() = default;

    /// Performs the command.
    /// @return its exit status
    virtual int execute() = 0;

    /// Prints the command's usage on standard output.
    virtual void printUsage() = 0;

    /// Checks the command line against the option table, stops at the first mistake, and logs the
    /// command line when there is none: help requested, required options, values missing or not
    /// wanted, name and alias both given, unknown options, wrong values.
    /// @throws CUsagecmd; CRuntimecmd for a path that does not exist
    virtual void checkArguments();

    /// Takes the command's own option out of the command line.
    /// @throws CUsagecmd code 1 (absent) or 4 (it has a value)
    virtual void removeCmdNameFromArgs();

    /// @throws CRuntimecmd code 1 with the return status when that is not 0
    virtual void checkReturnStatus() const;

    /// Passes when the option's value is one of the row's allowed values, without regard to case,
    /// or when the row has none.
    /// @throws CUsagecmd code 10
    void valueInSet(const PARAMETERS& row, const std::string& option) const;

    /// `valueInSet` for options that take a string.
    void validateExpectedParamValue(const PARAMETERS& row, const std::string& option) const;

    /// Logs the program's name, the command and its options.
    void logParameters() const;

    /// The options that the command accepts.
    const CParameterscmd& parameters() const { return params; }

protected:
    std::string name;  ///< the command's option, without "-"
    CArgscmd args;
    CParameterscmd params;
    std::int32_t returnStatus = 0;
    CLogcmd log;

private:
    void checkRow(const PARAMETERS& row) const;
};
