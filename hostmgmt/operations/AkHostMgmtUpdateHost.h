#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

/// `-updatehost`: changes the primary name of a host.
class AkHostMgmtUpdateHost : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[6];

    AkHostMgmtUpdateHost(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, or the status of the lookup or of the request
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints that the name is changed for the HTTP status 200 or 204, an empty line for any other.
    void printMessageString(int httpCode);
};
