#include "hostmgmt/AkHostMgmtComment.h"

#include "arkeon/console.h"
#include "arkeon/status.h"

#include <iterator>

namespace {

constexpr std::size_t longestComment = 2048;

const PARAMETERS paramList[] = {
    optionRow(1, option::server, parameterTypes::string),
    optionRow(2, option::hostid, parameterTypes::string),
    optionRow(3, option::host, parameterTypes::string),
    optionRow(4, option::comment, parameterTypes::string),
    optionRow(5, option::help, parameterTypes::none),
};

constexpr CatalogueText addSynopsis = catalogued(
    "SmeHmm0042N", "%s { {-ac | -addcomment}\n"
                   "\t { {-i | -hostid} <hostid> | {-n | -host} <host> }\n"
                   "\t {-c | -comment} <comment> } [{-s | -server} <master_server>] }");
constexpr CatalogueText addDescription = catalogued(
    "SmeHmm0044N", "Description:\n"
                   "Use this option to add a comment for the specified host or host ID.\n"
                   "Note: The added comment is associated only with the primary host and not with "
                   "the alternate mapped host name.\n"
                   "\n"
                   "Examples:");
constexpr const char* addExamples =
    "\n"
    "akhostmgmt -addcomment -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -comment \"This host "
    "placed in rack1\"\n"
    "akhostmgmt -addcomment -host testhost1 -comment \"This host is part of zone1\"\n"
    "akhostmgmt -addcomment -host testhost1 -comment \"This host is part of zone1\" -server "
    "ABCserver \n";
constexpr CatalogueText deleteSynopsis = catalogued(
    "SmeHmm0043N", "%s { {-dc | -deletecomment}\n"
                   "\t { {-i | -hostid} <hostid> | {-n | -host} <host> }\n"
                   "\t [{-s | -server} <master_server>] }");
constexpr CatalogueText deleteDescription = catalogued(
    "SmeHmm0045N", "Description:\n"
                   "Use this option to remove a comment for the specified host or host ID.\n"
                   "Note: This option removes the comment that is associated with the primary "
                   "host.\n"
                   "\n"
                   "Examples:");
constexpr const char* deleteExamples =
    "\n"
    "akhostmgmt -deletecomment -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 \n"
    "akhostmgmt -deletecomment -host testhost1 \n";
constexpr CatalogueText commentAdded =
    catalogued("SmeHmm0046N", "Comment for %s is successfully added.");
constexpr CatalogueText commentRemoved =
    catalogued("SmeHmm0047N", "Comment for %s is successfully removed.");

const char* nameIn(const CArgscmd& args) {
    return nameOrAlias(
        args, isOn(args, operation::addcomment) ? operation::addcomment : operation::deletecomment);
}

std::string flagLine(const char* label, bool flag) {
    return std::string(label) + (flag ? "1" : "0");
}

}  // namespace

AkHostMgmtComment::AkHostMgmtComment(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(nameIn(newArgs), newArgs, paramList, std::size(paramList), commandLog) {
    using namespace topLevelAkHostMgmtOptions;
    isAddComment = name == addcomment || name == addcomment_alias;
    isDeleteComment = name == deletecomment || name == deletecomment_alias;
    // Only the first label ends with a blank.
    operationLog.logit(
        flagLine(" Performing addcomment operation(If 1 Yes, Else No): ", isAddComment),
        logLevel::ordinary);
    operationLog.logit(
        flagLine(" Performing deletecomment operation(If 1 Yes, Else No):", isDeleteComment),
        logLevel::ordinary);
}

void AkHostMgmtComment::checkArguments() {
    CBasecmd::checkArguments();
    rejectHelpAlias();
    requireOneOf(option::hostid, option::host);
    if (isAddComment) {
        requireOption(option::comment);
    }
    if (isDeleteComment && isGiven(option::comment)) {
        throw CUsagecmd(invalidOption, option::comment.name);
    }
    rejectSlashes(option::hostid, messages::hostIdHoldsSlashes);
    rejectSlashes(option::host, messages::hostNameHoldsSlashes);
    rejectLongerThan(longestHostName, option::host);
    rejectLongerThan(longestComment, option::comment);
    rejectInvalidUtf8(option::comment);
}

int AkHostMgmtComment::execute() {
    if (const int failure = getUuid(resolvedHostId); failure != arkeon::status::success) {
        return failure;
    }
    setJSONObject("comment", newComment().c_str());
    int httpCode = 0;
    const int result =
        sendChange(OP_COMMENT, CURL_PUT, getJSONpayload(), "", resolvedHostId, httpCode);
    if (result == arkeon::status::success) {
        printMessageString(httpCode);
    }
    return result;
}

// A host without a comment has the empty one, so deleting is setting that.
std::string AkHostMgmtComment::newComment() const {
    if (!isAddComment) {
        return {};
    }
    std::string comment = valueOf(option::comment);
    if (comment.find_first_not_of(' ') == std::string::npos) {
        throw CUsagecmd(valueMissing, option::comment.name);
    }
    return comment;
}

void AkHostMgmtComment::printMessageString(int httpCode) {
    std::string text;
    if (httpCode == httpStatus::ok) {
        text = messageText(isAddComment ? commentAdded : commentRemoved, resolvedHostId.c_str());
    }
    announce(text);
    // At once, for whoever waits for this line.
    arkeon::Console::standard().flush();
}

void AkHostMgmtComment::printAddCommentHelp() {
    showSynopsis(addSynopsis);
}

void AkHostMgmtComment::printDeleteCommentHelp() {
    showSynopsis(deleteSynopsis);
}

void AkHostMgmtComment::printHelp() {
    printAddCommentHelp();
    printDeleteCommentHelp();
}

void AkHostMgmtComment::printUsage() {
    if (isAddComment) {
        showUsage(addSynopsis, addDescription, addExamples);
    } else {
        showUsage(deleteSynopsis, deleteDescription, deleteExamples);
    }
}
