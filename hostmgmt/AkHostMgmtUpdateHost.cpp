#include "hostmgmt/AkHostMgmtUpdateHost.h"

#include "arkeon/status.h"

#include <iterator>

namespace {

const PARAMETERS paramList[] = {
    optionRow(1, option::server, parameterTypes::string),
    optionRow(2, option::hostid, parameterTypes::string),
    optionRow(3, option::host, parameterTypes::string),
    optionRow(4, option::newhostname, parameterTypes::string),
    optionRow(5, option::reason, parameterTypes::string),
    optionRow(6, option::help, parameterTypes::none),
};

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

AkHostMgmtUpdateHost::AkHostMgmtUpdateHost(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::updatehost), newArgs, paramList, std::size(paramList),
          commandLog) {}

// Only -add and -delete limit the reason.
void AkHostMgmtUpdateHost::checkArguments() {
    CBasecmd::checkArguments();
    rejectHelpAlias();
    requireOneOf(option::hostid, option::host);
    requireOption(option::newhostname);
    rejectSlashes(option::host, messages::hostNameHoldsSlashes);
    rejectSlashes(option::hostid, messages::hostIdHoldsSlashes);
    rejectSlashes(option::newhostname, messages::hostNameHoldsSlashes);
    rejectLongerThan(longestHostName, option::host);
    rejectLongerThan(longestHostName, option::newhostname);
    rejectInvalidUtf8(option::newhostname);
}

int AkHostMgmtUpdateHost::execute() {
    if (const int failure = getUuid(resolvedHostId); failure != arkeon::status::success) {
        return failure;
    }
    setJSONObject("hostName", valueOf(option::newhostname).c_str());
    int httpCode = 0;
    const int result =
        sendChange(OP_HOST, CURL_PATCH, getJSONpayload(), "", resolvedHostId, httpCode);
    if (result == arkeon::status::success) {
        printMessageString(httpCode);
    }
    return result;
}

void AkHostMgmtUpdateHost::printMessageString(int httpCode) {
    std::string text;
    if (httpCode == httpStatus::ok || httpCode == httpStatus::noContent) {
        text = messageText(hostUpdated, resolvedHostId.c_str());
    }
    announce(text);
}

void AkHostMgmtUpdateHost::printHelp() {
    showSynopsis(synopsis);
}

void AkHostMgmtUpdateHost::printUsage() {
    showUsage(synopsis, description, examples);
}
