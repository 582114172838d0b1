#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <string>

/// `-addhost`: makes a host record for a name that the server does not know yet, after a warning
/// and a question on standard input.
class AkHostMgmtAddHost : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[4];

    AkHostMgmtAddHost(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, even if the user declines; the status of the request; 7651, with nothing sent,
    ///         if a question cannot be shown
    int execute() override;

    void printUsage() override;

    /// Prints the synopsis.
    static void printHelp();

    /// Prints that the host is added for the HTTP status 200 or 201, an empty line for any other.
    void printMessageString(int httpCode);

private:
    /// The answer to the question; `notAsked` if it could not be shown.
    enum class Answer { yes, no, notAsked };

    Answer askForConfirmation() const;
    int addHost();

    std::string addedHostName;
};
