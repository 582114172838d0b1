#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <string>

/// `-addhost`: makes a host record for a name that the server does not know yet, after a warning
/// and a question on standard input.
class AkHostMgmtAddHost : public AkHostMgmtBaseOption {
public:
    AkHostMgmtAddHost(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first broken rule
    void checkArguments() override;

    /// @return 0, also when the user declines; the status of the request; 7651 when a question
    ///         cannot be shown: nobody was asked then, and nothing is sent
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints that the host is added for the HTTP status 200 or 201, an empty line for any other.
    void printMessageString(int httpCode);

private:
    /// What came of the question; `unshown` when nobody could see it.
    enum class Answer { yes, no, unshown };

    Answer askForConfirmation() const;
    int addHost();

    std::string addedHostName;
};
