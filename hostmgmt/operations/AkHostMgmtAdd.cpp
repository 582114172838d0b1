#include "hostmgmt/operations/AkHostMgmtAdd.h"

#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>

namespace {

constexpr CatalogueText synopsis = catalogued(
    "SmeHmm0008N", "%s {{-a | -add} { {-i | -hostid} <hostid> | {-n | -host} <host>}\n"
                   "\t {-hm | -mappingname} <mappingname>\n"
                   "\t [-is | -isshared] [{-r | -reason} <reason>]\n"
                   "\t [{-s | -server} <master_server>] }");
constexpr CatalogueText description = catalogued(
    "SmeHmm0013N", "Description:\n"
                   "Adds and approves host ID-to-host name (or IP address) mapping.\n"
                   "\n"
                   "Examples:\n");
constexpr const char* examples =
    "akhostmgmt -add -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -mappingname testhost1\n"
    "akhostmgmt -add -host testhost1 -mappingname testhost2\n"
    "akhostmgmt -add -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -mappingname testhost3 "
    "-isshared\n";
constexpr CatalogueText mappingAdded =
    catalogued("SmeHmm0003N", "%s is successfully mapped to %s.");
constexpr CatalogueText mappingUpdated = catalogued("SmeHmm0005N", "%s is successfully updated.");

}  // namespace

const PARAMETERS AkHostMgmtAdd::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::hostid, parameterTypes::stringValue),
    optionRow(3, option::host, parameterTypes::stringValue),
    optionRow(4, option::mappingname, parameterTypes::stringValue),
    optionRow(5, option::isshared, parameterTypes::noValue),
    optionRow(6, option::reason, parameterTypes::stringValue),
    optionRow(7, option::help, parameterTypes::noValue),
};

AkHostMgmtAdd::AkHostMgmtAdd(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::add), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtAdd::checkArguments() {
    CBasecmd::checkArguments();
    const ArgumentRules rules(args, operationLog);
    rules.rejectHelpAlias();
    rules.requireOneOf(option::hostid, option::host);
    rules.requireOption(option::mappingname);
    rules.rejectSlashes(option::host, hostNameHasSlashes);
    rules.rejectSlashes(option::hostid, hostIdHasSlashes);
    rules.rejectSlashes(option::mappingname, messages::mappingNameHasSlashes);
    rules.rejectLongerThan(maxHostName, option::host);
    rules.rejectLongerThan(maxMappingName, option::mappingname);
    rules.rejectLongerThan(maxReason, option::reason);
}

int AkHostMgmtAdd::execute() {
    return changeHost(
        {OP_ADD_MAPPING, CURL_PUT, valueOf(args, option::mappingname)},
        [this] { setJSONObject("isShared", json_boolean(isGiven(args, option::isshared))); },
        [this](int httpCode) { printMessageString(httpCode); });
}

void AkHostMgmtAdd::printMessageString(int httpCode) {
    const std::string mappingName = valueOf(args, option::mappingname);
    std::string text;
    if (httpCode == httpStatus::created) {
        text = messageText(mappingAdded, mappingName.c_str(), resolvedHostId.c_str());
    } else if (httpCode == httpStatus::ok) {
        text = messageText(mappingUpdated, mappingName.c_str());
    }
    reportSuccess(text, operationLog);
}

void AkHostMgmtAdd::printHelp() {
    printSynopsis(synopsis);
}

void AkHostMgmtAdd::printUsage() {
    printUsageText(synopsis, description, examples);
}
