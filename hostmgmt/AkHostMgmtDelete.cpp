#include "hostmgmt/AkHostMgmtDelete.h"

#include "arkeon/status.h"

#include <iterator>

namespace {

const PARAMETERS paramList[] = {
    optionRow(1, option::server, parameterTypes::string),
    optionRow(2, option::hostid, parameterTypes::string),
    optionRow(3, option::host, parameterTypes::string),
    optionRow(4, option::mappingname, parameterTypes::string),
    optionRow(5, option::reason, parameterTypes::string),
    optionRow(6, option::help, parameterTypes::none),
};

constexpr CatalogueText synopsis = catalogued(
    "SmeHmm0009N", "%s { {-d | -delete} { {-i | -hostid} <hostid> | {-n | -host} <host>}\n"
                   "\t {-hm | -mappingname} <mappingname>\n"
                   "\t [{-r | -reason} <reason>]\n"
                   "\t [{-s | -server} <master_server>] }");
constexpr CatalogueText description = catalogued(
    "SmeHmm0015N", "Description:\n"
                   "Removes host ID-to-host name (or IP address) mapping.\n"
                   "\n"
                   "Examples:\n");
constexpr const char* examples =
    "akhostmgmt -delete -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -mappingname testhost1\n"
    "akhostmgmt -delete -host fs001 -mappingname testhost4\n";
constexpr CatalogueText mappingRemoved =
    catalogued("SmeHmm0004N", "Mapping between %s and %s is removed.");

}  // namespace

AkHostMgmtDelete::AkHostMgmtDelete(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::delete_cmd), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtDelete::checkArguments() {
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

int AkHostMgmtDelete::execute() {
    if (const int failure = getUuid(resolvedHostId); failure != arkeon::status::success) {
        return failure;
    }
    int httpCode = 0;
    const int result = sendChange(
        OP_DELETE_MAPPING, CURL_DELETE, "", valueOf(option::mappingname), resolvedHostId, httpCode);
    if (result == arkeon::status::success) {
        printMessageString(result);
    }
    return result;
}

void AkHostMgmtDelete::printMessageString(int code) {
    if (code == arkeon::status::success) {
        announce(messageText(
            mappingRemoved, valueOf(option::mappingname).c_str(), resolvedHostId.c_str()));
    }
}

void AkHostMgmtDelete::printHelp() {
    showSynopsis(synopsis);
}

void AkHostMgmtDelete::printUsage() {
    showUsage(synopsis, description, examples);
}
