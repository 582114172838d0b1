#include "hostmgmt/operations/AkHostMgmtComment.h"

#include "arkeon/console.h"
#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>

namespace {

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
        args,
        isGiven(args, operation::addcomment) ? operation::addcomment : operation::deletecomment);
}

std::string flagLine(const char* label, bool flag) {
    return std::string(label) + (flag ? "1" : "0");
}

}  // namespace

const PARAMETERS AkHostMgmtComment::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::hostid, parameterTypes::stringValue),
    optionRow(3, option::host, parameterTypes::stringValue),
    optionRow(4, option::comment, parameterTypes::stringValue),
    optionRow(5, option::help, parameterTypes::noValue),
};

AkHostMgmtComment::AkHostMgmtComment(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(nameIn(newArgs), newArgs, paramList, std::size(paramList), commandLog) {
    using namespace topLevelAkHostMgmtOptions;
    isAddComment = name == addcomment || name == addcomment_alias;
    isDeleteComment = name == deletecomment || name == deletecomment_alias;
    // Only the first label ends with a space.
    operationLog.logit(
        flagLine(" Performing addcomment operation(If 1 Yes, Else No): ", isAddComment),
        logLevel::ordinary);
    operationLog.logit(
        flagLine(" Performing deletecomment operation(If 1 Yes, Else No):", isDeleteComment),
        logLevel::ordinary);
}

void AkHostMgmtComment::checkArguments() {
    CBasecmd::checkArguments();
    const ArgumentRules rules(args, operationLog);
    rules.rejectHelpAlias();
    rules.requireOneOf(option::hostid, option::host);
    if (isAddComment) {
        rules.requireOption(option::comment);
    }
    if (isDeleteComment && isGiven(args, option::comment)) {
        throw CUsagecmd(invalidOption, option::comment.name);
    }
    rules.rejectSlashes(option::hostid, hostIdHasSlashes);
    rules.rejectSlashes(option::host, hostNameHasSlashes);
    rules.rejectLongerThan(maxHostName, option::host);
    rules.rejectLongerThan(maxComment, option::comment);
    rules.rejectInvalidUtf8(option::comment);
}

int AkHostMgmtComment::execute() {
    return changeHost(
        {OP_COMMENT, CURL_PUT}, [this] { setJSONObject("comment", newComment().c_str()); },
        [this](int httpCode) { printMessageString(httpCode); });
}

// A host without a comment has the empty one, so deleting is setting that.
std::string AkHostMgmtComment::newComment() const {
    if (!isAddComment) {
        return {};
    }
    std::string comment = valueOf(args, option::comment);
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
    reportSuccess(text, operationLog);
    // Flush now: another program may be waiting for this line.
    arkeon::Console::standard().flush();
}

void AkHostMgmtComment::printAddCommentHelp() {
    printSynopsis(addSynopsis);
}

void AkHostMgmtComment::printDeleteCommentHelp() {
    printSynopsis(deleteSynopsis);
}

void AkHostMgmtComment::printHelp() {
    printAddCommentHelp();
    printDeleteCommentHelp();
}

void AkHostMgmtComment::printUsage() {
    if (isAddComment) {
        printUsageText(addSynopsis, addDescription, addExamples);
    } else {
        printUsageText(deleteSynopsis, deleteDescription, deleteExamples);
    }
}
