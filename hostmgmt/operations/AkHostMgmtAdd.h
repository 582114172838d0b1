#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

/// `-add`: maps a name or address to a host and approves it, or updates the mapping that is there.
class AkHostMgmtAdd : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[7];

    AkHostMgmtAdd(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, or the status of the lookup or of the request
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints what a reply with this HTTP status means: 201 a new mapping, 200 an updated one; an
    /// empty line for any other.
    void printMessageString(int httpCode);
};
