#pragma once

#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <string>

/// `-addcomment` and `-deletecomment`: set and clear the comment of a host, whichever of the two
/// the command line asks for.
class AkHostMgmtComment : public AkHostMgmtBaseOption {
public:
    static const PARAMETERS paramList[5];

    AkHostMgmtComment(CArgscmd newArgs, CLogcmd& commandLog);

    /// @throws CUsagecmd at the first rule that is broken
    void checkArguments() override;

    /// @return 0, or the status of the lookup or of the request
    /// @throws CUsagecmd code 8 if the comment to add consists only of spaces; the host has been
    ///         looked up by then
    int execute() override;

    /// Prints the usage of the operation that was asked for.
    void printUsage() override;

    /// Prints the synopses of both operations.
    static void printHelp();
    static void printAddCommentHelp();
    static void printDeleteCommentHelp();

    /// Prints that the comment is added or removed for the HTTP status 200, an empty line for any
    /// other.
    void printMessageString(int httpCode);

private:
    std::string newComment() const;

    bool isAddComment = false;
    bool isDeleteComment = false;
};
