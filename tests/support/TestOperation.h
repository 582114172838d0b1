#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"
#include "support/CommandLine.h"
#include "support/LogLines.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

/// The base of the operations with nothing added.
class BareOperation : public AkHostMgmtBaseOption {
public:
    BareOperation(const std::vector<std::string>& options, CLogcmd& commandLog)
        : AkHostMgmtBaseOption("test", parsed(options), table, std::size(table), commandLog) {}

    int execute() override { return 0; }
    void printUsage() override {}
    bool hasPayload() const { return payload != nullptr; }

private:
    static inline const PARAMETERS table[] = {{1, "server", "s", 0, stringValue}};
};

/// For an operation whose command line holds nothing but its own option.
inline const std::vector<std::string> noOptions;

/// A bare operation and its log.
class TestOperation {
    LogLines lines_;

public:
    explicit TestOperation(const std::vector<std::string>& options = {"-server", "primary"})
        : operation(options, lines_.log) {}

    /// Whether the log holds a line, as "LEVEL text".
    static bool logged(const std::string& line) {
        const std::vector<std::string>& lines = LogLines::lines();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    BareOperation operation;
};
