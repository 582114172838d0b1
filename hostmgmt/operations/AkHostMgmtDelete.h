#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

/// `-delete`: removes a mapped name or IP address from a host.
class AkHostMgmtDelete : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[6];

    AkHostMgmtDelete(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, or the status of the lookup or of the request; 8901 when the host does not have
    ///         the mapping
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints that the mapping is removed for the result 0, nothing for any other.
    void printMessageString(int code);
};
