#include "hostmgmt/AkHostMgmtReissueCert.h"

#include "arkeon/status.h"

#include <iterator>

namespace {

const PARAMETERS paramList[] = {
    optionRow(1, option::server, parameterTypes::string),
    optionRow(2, option::hostid, parameterTypes::string),
    optionRow(3, option::host, parameterTypes::string),
    optionRow(4, option::reason, parameterTypes::string),
    optionRow(5, option::autoreissue, parameterTypes::unsignedInteger),
    optionRow(6, option::help, parameterTypes::none),
};

constexpr CatalogueText synopsis = catalogued(
    "SmeHmm0049N", "%s {{-aa | -allowautoreissuecert}\n"
                   "\t { {-i | -hostid} <hostid> | {-n | -host} <host> }\n"
                   "\t {-ar | -autoreissue} <0/1> } [{-r | -reason} <reason>]\n"
                   "\t [{-s | -server} <master_server>] }");
constexpr CatalogueText description = catalogued(
    "SmeHmm0050N",
    "Description:\n"
    "Use this option to set the autoreissue parameter for the specified host or host ID.\n"
    "Note: The autoreissue parameter is associated only with the primary host name and not with "
    "the alternate mapped name.\n"
    "\n"
    "Examples:");
constexpr const char* examples =
    "\n"
    "akhostmgmt -allowautoreissuecert -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -autoreissue 1 "
    "\n"
    "akhostmgmt -allowautoreissuecert -host testhost1 -autoreissue 1 \n"
    "akhostmgmt -allowautoreissuecert -host testhost1 -autoreissue 1 -server ABCserver \n";
constexpr CatalogueText eitherZeroOrOne =
    catalogued("SmeHmm0048N", "The value for autoreissue parameter should be either 0 or 1.");
constexpr CatalogueText whatEnablingMeans = catalogued(
    "SmeHmm0064N", "This option lets you reissue certificate on the host without requiring a "
                   "reissue token. By default, the option is disabled after 48 hours.");
constexpr CatalogueText enabled =
    catalogued("SmeHmm0051N", "The auto reissue certificate parameter is enabled for %s.");
constexpr CatalogueText whatDisablingMeans = catalogued(
    "SmeHmm0065N", "This option resets the auto reissue certificate parameter. You will require a "
                   "reissue token to deploy a certificate on the host.");
constexpr CatalogueText disabled =
    catalogued("SmeHmm0063N", "The auto reissue certificate parameter is disabled for %s.");

}  // namespace

AkHostMgmtReissueCert::AkHostMgmtReissueCert(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::setautoreissuecert), newArgs, paramList,
          std::size(paramList), commandLog) {}

void AkHostMgmtReissueCert::checkArguments() {
    CBasecmd::checkArguments();
    rejectHelpAlias();
    requireOneOf(option::hostid, option::host);
    rejectSlashes(option::hostid, messages::hostIdHoldsSlashes);
    rejectSlashes(option::host, messages::hostNameHoldsSlashes);
    rejectLongerThan(longestHostName, option::host);
    requireOption(option::autoreissue);
    if (numberOf(option::autoreissue) > 1) {
        refuse(invalidValue, messageText(eitherZeroOrOne) + "\n");
    }
}

int AkHostMgmtReissueCert::execute() {
    if (const int failure = getUuid(resolvedHostId); failure != arkeon::status::success) {
        return failure;
    }
    setJSONObject("autoReissue", json_boolean(isWanted()));
    int httpCode = 0;
    const int result =
        sendChange(OP_HOST, CURL_PATCH, getJSONpayload(), "", resolvedHostId, httpCode);
    if (result == arkeon::status::success) {
        printMessageString(httpCode);
    }
    return result;
}

bool AkHostMgmtReissueCert::isWanted() const {
    return numberOf(option::autoreissue) != 0;
}

void AkHostMgmtReissueCert::printMessageString(int httpCode) {
    std::string meaning;
    std::string outcome;
    if (httpCode == httpStatus::ok || httpCode == httpStatus::noContent) {
        meaning = messageText(isWanted() ? whatEnablingMeans : whatDisablingMeans);
        outcome = messageText(isWanted() ? enabled : disabled, resolvedHostId.c_str());
    }
    announce(meaning);
    announce(outcome);
}

void AkHostMgmtReissueCert::printHelp() {
    showSynopsis(synopsis);
}

void AkHostMgmtReissueCert::printUsage() {
    showUsage(synopsis, description, examples);
}
