#include "hostmgmt/operations/AkHostMgmtAddHost.h"

#include "arkeon/console.h"
#include "arkeon/status.h"
#include "cmdframework/CaseInsensitive.h"

#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>

using arkeon::Console;

namespace {

constexpr CatalogueText synopsis = catalogued(
    "SmeHmm0052N", "%s {{-ah | -addhost} {-n | -host} <host> }\n"
                   "\t [{-r | -reason} <reason>] [{-s | -server} <master_server>] }");
constexpr CatalogueText description = catalogued(
    "SmeHmm0053N", "Description:\n"
                   "Use this option to add a host in the host database.\n"
                   "\n"
                   "Examples:");
// The second example has two spaces before "-server".
constexpr const char* examples = "\n"
                                 "akhostmgmt -addhost -host testhost1 \n"
                                 "akhostmgmt -addhost -host testhost1  -server ABCserver \n";
constexpr CatalogueText hostAdded =
    catalogued("SmeHmm0054N", "The host %s is added in the host database");
constexpr CatalogueText notRecommended = catalogued(
    "SmeHmm0057N", "It is not recommended to manually add a host except for specific scenarios.");
constexpr CatalogueText furtherReading = catalogued(
    "SmeHmm0058N", " For more details, refer to the Adding a Arkeon host manually section from the "
                   "Arkeon Security and Encryption Guide.");
constexpr CatalogueText question =
    catalogued("SmeHmm0059N", "Do you really want to add a host? (y/n): ");
constexpr CatalogueText questionAgain =
    catalogued("SmeHmm0060N", "Please type 'y' for yes or 'n' for no: ");
constexpr CatalogueText declined = catalogued("SmeHmm0061N", "Exiting as 'n' or 'no' is entered.");
constexpr CatalogueText confirmed =
    catalogued("SmeHmm0062N", "Continuing as 'y' or 'yes' is entered.");

bool isOneOf(const std::string& answer, const char* word, const char* letter) {
    // A line may hold a NUL byte, where a comparison would end.
    return answer.find('\0') == std::string::npos &&
           (equalIgnoringCase(answer, word) || equalIgnoringCase(answer, letter));
}

}  // namespace

const PARAMETERS AkHostMgmtAddHost::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::host, parameterTypes::stringValue),
    optionRow(3, option::reason, parameterTypes::stringValue),
    optionRow(4, option::help, parameterTypes::noValue),
};

AkHostMgmtAddHost::AkHostMgmtAddHost(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::addhost), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtAddHost::checkArguments() {
    CBasecmd::checkArguments();
    const ArgumentRules rules(args, operationLog);
    rules.rejectHelpAlias();
    rules.requireOption(option::host);
    rules.rejectSlashes(option::host, hostNameHasSlashes);
    rules.rejectLongerThan(maxHostName, option::host);
    rules.rejectInvalidUtf8(option::host);
}

int AkHostMgmtAddHost::execute() {
    const Answer answer = askForConfirmation();
    if (answer == Answer::notAsked) {
        return arkeon::status::outputFailed;
    }
    if (answer == Answer::no) {
        operationLog.logit(messageText(declined), logLevel::ordinary);
        return arkeon::status::success;
    }
    operationLog.logit(messageText(confirmed), logLevel::ordinary);
    return addHost();
}

// At end of input everything but "no" counts as "yes", on purpose: without standard input the host
// is added.
AkHostMgmtAddHost::Answer AkHostMgmtAddHost::askForConfirmation() const {
    Console& console = Console::standard();
    console.write(messageText(notRecommended) + messageText(furtherReading) + "\n");
    console.write(messageText(question));
    while (console.flush()) {
        const Console::Line answer = console.readLine();
        if (isOneOf(answer.text, "no", "n")) {
            return Answer::no;
        }
        if (answer.endsInput || isOneOf(answer.text, "yes", "y")) {
            return Answer::yes;
        }
        const std::string again = messageText(questionAgain);
        console.write(again);
        operationLog.logit(again, logLevel::ordinary);
    }
    return Answer::notAsked;
}

int AkHostMgmtAddHost::addHost() {
    addedHostName = valueOf(args, option::host);
    setJSONObject("hostName", addedHostName.c_str());
    return sendChange(
        {OP_ADD_HOST, CURL_POST}, [this](int httpCode) { printMessageString(httpCode); });
}

void AkHostMgmtAddHost::printMessageString(int httpCode) {
    std::string text;
    if (httpCode == httpStatus::ok || httpCode == httpStatus::created) {
        text = messageText(hostAdded, addedHostName.c_str());
    }
    reportSuccess(text, operationLog);
}

void AkHostMgmtAddHost::printHelp() {
    printSynopsis(synopsis);
}

void AkHostMgmtAddHost::printUsage() {
    printUsageText(synopsis, description, examples);
}
