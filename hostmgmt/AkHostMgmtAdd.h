#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <string>

/// `-add`: maps a name or address to a host and approves it, or updates the mapping that is there.
class AkHostMgmtAdd : public AkHostMgmtBaseOption {
public:
    AkHostMgmtAdd(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first broken rule
    void checkArguments() override;

    /// @return 0, or the status of the look-up or of the request
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints what a reply with this HTTP status means: 201 a new mapping, 200 an updated one; an
    /// empty line for any other.
    void printMessageString(int httpCode);

private:
    std::string resolvedHostId;
};
