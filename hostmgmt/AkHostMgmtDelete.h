#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <string>

/// `-delete`: takes a name or address away from a host.
class AkHostMgmtDelete : public AkHostMgmtBaseOption {
public:
    AkHostMgmtDelete(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first broken rule
    void checkArguments() override;

    /// @return 0, or the status of the look-up or of the request; 8901 when the host does not have
    ///         the mapping
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints that the mapping is removed for the result 0, nothing for any other.
    void printMessageString(int code);

private:
    std::string resolvedHostId;
};
