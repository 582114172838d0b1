#include "hostmgmt/AkHostMgmtAdd.h"

#include "arkeon/status.h"

#include <iterator>

namespace {

const PARAMETERS paramList[] = {
    optionRow(1, option::server, parameterTypes::string),
    optionRow(2, option::hostid, parameterTypes::string),
    optionRow(3, option::host, parameterTypes::string),
    optionRow(4, option::mappingname, parameterTypes::string),
    optionRow(5, option::isshared, parameterTypes::none),
    optionRow(6, option::reason, parameterTypes::string),
    optionRow(7, option::help, parameterTypes::none),
};

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

AkHostMgmtAdd::AkHostMgmtAdd(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::add), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtAdd::checkArguments() {
    CBasecmd::checkArguments();
    rejectHelpAlias();
    requireOneOf(option::hostid, option::host);
    requireOption(option::mappingname);
    rejectSlashes(option::host, messages::hostNameHoldsSlashes);
    rejectSlashes(option::hostid, messages::hostIdHoldsSlashes);
    rejectSlashes(option::mappingname, messages::mappingNameHoldsSlashes);
    rejectLongerThan(longestHostName, option::host);
    rejectLongerThan(longestMappingName, option::mappingname);
    rejectLongerThan(longestReason, option::reason);
}

int AkHostMgmtAdd::execute() {
    if (const int failure = getUuid(resolvedHostId); failure != arkeon::status::success) {
        return failure;
    }
    setJSONObject("isShared", json_boolean(isGiven(option::isshared)));
    int httpCode = 0;
    const int result = sendChange(
        OP_ADD_MAPPING, CURL_PUT, getJSONpayload(), valueOf(option::mappingname), resolvedHostId,
        httpCode);
    if (result == arkeon::status::success) {
        printMessageString(httpCode);
    }
    return result;
}

void AkHostMgmtAdd::printMessageString(int httpCode) {
    const std::string mappingName = valueOf(option::mappingname);
    std::string text;
    if (httpCode == httpStatus::created) {
        text = messageText(mappingAdded, mappingName.c_str(), resolvedHostId.c_str());
    } else if (httpCode == httpStatus::ok) {
        text = messageText(mappingUpdated, mappingName.c_str());
    }
    announce(text);
}

void AkHostMgmtAdd::printHelp() {
    showSynopsis(synopsis);
}

void AkHostMgmtAdd::printUsage() {
    showUsage(synopsis, description, examples);
}
