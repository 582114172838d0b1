#include "hostmgmt/operations/AkHostMgmtReissueCert.h"

#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>

namespace {

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

const PARAMETERS AkHostMgmtReissueCert::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::hostid, parameterTypes::stringValue),
    optionRow(3, option::host, parameterTypes::stringValue),
    optionRow(4, option::reason, parameterTypes::stringValue),
    optionRow(5, option::autoreissue, parameterTypes::unsignedValue),
    optionRow(6, option::help, parameterTypes::noValue),
};

AkHostMgmtReissueCert::AkHostMgmtReissueCert(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::setautoreissuecert), newArgs, paramList,
          std::size(paramList), commandLog) {}

void AkHostMgmtReissueCert::checkArguments() {
    CBasecmd::checkArguments();
    const ArgumentRules rules(args, operationLog);
    rules.rejectHelpAlias();
    rules.requireOneOf(option::hostid, option::host);
    rules.rejectSlashes(option::hostid, hostIdHasSlashes);
    rules.rejectSlashes(option::host, hostNameHasSlashes);
    rules.rejectLongerThan(maxHostName, option::host);
    rules.requireOption(option::autoreissue);
    if (numberOf(args, option::autoreissue) > 1) {
        rules.reject(invalidValue, messageText(eitherZeroOrOne) + "\n");
    }
}

int AkHostMgmtReissueCert::execute() {
    return changeHost(
        {OP_HOST, CURL_PATCH}, [this] { setJSONObject("autoReissue", json_boolean(enables())); },
        [this](int httpCode) { printMessageString(httpCode); });
}

bool AkHostMgmtReissueCert::enables() const {
    return numberOf(args, option::autoreissue) != 0;
}

void AkHostMgmtReissueCert::printMessageString(int httpCode) {
    std::string meaning;
    std::string outcome;
    if (httpCode == httpStatus::ok || httpCode == httpStatus::noContent) {
        meaning = messageText(enables() ? whatEnablingMeans : whatDisablingMeans);
        outcome = messageText(enables() ? enabled : disabled, resolvedHostId.c_str());
    }
    reportSuccess(meaning, operationLog);
    reportSuccess(outcome, operationLog);
}

void AkHostMgmtReissueCert::printHelp() {
    printSynopsis(synopsis);
}

void AkHostMgmtReissueCert::printUsage() {
    printUsageText(synopsis, description, examples);
}
