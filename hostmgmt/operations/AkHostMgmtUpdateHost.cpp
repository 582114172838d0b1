#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"

#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>

namespace {

constexpr CatalogueText synopsis = catalogued(
    "SmeHmm0069N", "%s {{-uh | -updatehost} { {-i | -hostid} <hostid> | {-n | -host} <host>}\n"
                   "\t {-nh | -newhostname} <newhostname>\n"
                   "\t [{-r | -reason} <reason>]\n"
                   "\t [{-s | -server} <master_server>] }");
constexpr CatalogueText description = catalogued(
    "SmeHmm0070N", "Description:\n"
                   "Updates the primary hostname of the host.\n"
                   "\n"
                   "Examples:\n");
constexpr const char* examples =
    "akhostmgmt -updatehost -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -newhostname testhost1\n"
    "akhostmgmt -updatehost -host testhost1 -newhostname testhost2\n";
constexpr CatalogueText hostUpdated =
    catalogued("SmeHmm0068N", "The primary host name is updated for %s");

}  // namespace

const PARAMETERS AkHostMgmtUpdateHost::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::hostid, parameterTypes::stringValue),
    optionRow(3, option::host, parameterTypes::stringValue),
    optionRow(4, option::newhostname, parameterTypes::stringValue),
    optionRow(5, option::reason, parameterTypes::stringValue),
    optionRow(6, option::help, parameterTypes::noValue),
};

AkHostMgmtUpdateHost::AkHostMgmtUpdateHost(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::updatehost), newArgs, paramList, std::size(paramList),
          commandLog) {}

// Only -add and -delete limit the reason.
void AkHostMgmtUpdateHost::checkArguments() {
    CBasecmd::checkArguments();
    const ArgumentRules rules(args, operationLog);
    rules.rejectHelpAlias();
    rules.requireOneOf(option::hostid, option::host);
    rules.requireOption(option::newhostname);
    rules.rejectSlashes(option::host, hostNameHasSlashes);
    rules.rejectSlashes(option::hostid, hostIdHasSlashes);
    rules.rejectSlashes(option::newhostname, hostNameHasSlashes);
    rules.rejectLongerThan(maxHostName, option::host);
    rules.rejectLongerThan(maxHostName, option::newhostname);
    rules.rejectInvalidUtf8(option::newhostname);
}

int AkHostMgmtUpdateHost::execute() {
    return changeHost(
        {OP_HOST, CURL_PATCH},
        [this] { setJSONObject("hostName", valueOf(args, option::newhostname).c_str()); },
        [this](int httpCode) { printMessageString(httpCode); });
}

void AkHostMgmtUpdateHost::printMessageString(int httpCode) {
    std::string text;
    if (httpCode == httpStatus::ok || httpCode == httpStatus::noContent) {
        text = messageText(hostUpdated, resolvedHostId.c_str());
    }
    reportSuccess(text, operationLog);
}

void AkHostMgmtUpdateHost::printHelp() {
    printSynopsis(synopsis);
}

void AkHostMgmtUpdateHost::printUsage() {
    printUsageText(synopsis, description, examples);
}
