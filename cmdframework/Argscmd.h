#pragma once

#include "cmdframework/CaseInsensitive.h"
#include "cmdframework/Parameterscmd.h"

#include <map>
#include <string>

/// The command line as options with values. Names are compared without regard to case; the spelling
/// typed first is kept. Every option takes at most one value, and a value never begins with "-".
class CArgscmd {
public:
    /// Options in the order of their names, without their leading "-"; a value is empty when the
    /// option has none.
    using Options = std::map<std::string, std::string, ciCompare>;

    CArgscmd() = default;

    /// Parses a command line and advances each option of `argv` past its "-" in place. A null
    /// `argv` gives no options and no program name.
    /// @throws CUsagecmd code 2 (an argument without "-") or 6 (an option given twice)
    CArgscmd(int argc, char** argv);

    /// Whether `s` begins with "-"; false for null.
    bool isOptionArgument(const char* s) const;

    /// Whether the option is present, with or without a value.
    bool isCommand(const std::string& name) const;
    bool exists(const char* name) const;

    bool hasAValue(const char* name) const;

    /// The option's value; empty when it has none or is absent.
    std::string argValue(const char* name) const;

    /// The option's value as an unsigned 32-bit integer.
    /// @throws CUsagecmd code 8 (no value) or 7 (no such number)
    unsigned int numericValue(const char* name) const;

    /// Passes when `path` is null or exists.
    /// @throws CRuntimecmd code 4 with status 104
    void pathExists(const char* path) const;

    /// Checks the option's value by its type: a path must exist, a number must be one.
    /// @throws as `pathExists` and `numericValue`
    void validate(parameterTypes type, const std::string& name) const;

    /// The last path component of the program's own name.
    std::string getProgramName() const { return programName; }

    /// The options as typed, in the order of their names, for the log: each " -name value". Ends
    /// with a NUL inside the text.
    std::string commandLine() const;

    /// Removes an option, if present.
    void remove(const std::string& name) { options_.erase(name); }

    const Options& options() const { return options_; }

private:
    void parse(int argc, char** argv);

    Options options_;
    std::string programName;
};
