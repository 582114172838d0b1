#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

/// `-allowautoreissuecert`: grants or revokes the permission to reissue a host's certificate
/// without a reissue token. The server revokes it after 48 hours.
class AkHostMgmtReissueCert : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[6];

    AkHostMgmtReissueCert(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, or the status of the lookup or of the request
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// For the HTTP status 200 or 204 prints what the new setting means and that it is set, two
    /// empty lines for any other.
    void printMessageString(int httpCode);

private:
    /// Whether the command line grants the permission.
    bool enables() const;
};
