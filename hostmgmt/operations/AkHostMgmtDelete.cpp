#include "hostmgmt/operations/AkHostMgmtDelete.h"

#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>

namespace {

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

const PARAMETERS AkHostMgmtDelete::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::hostid, parameterTypes::stringValue),
    optionRow(3, option::host, parameterTypes::stringValue),
    optionRow(4, option::mappingname, parameterTypes::stringValue),
    optionRow(5, option::reason, parameterTypes::stringValue),
    optionRow(6, option::help, parameterTypes::noValue),
};

AkHostMgmtDelete::AkHostMgmtDelete(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::delete_cmd), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtDelete::checkArguments() {
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

int AkHostMgmtDelete::execute() {
    return changeHost(
        {OP_DELETE_MAPPING, CURL_DELETE, valueOf(args, option::mappingname)}, [] {},
        [this](int /*httpCode*/) { printMessageString(arkeon::status::success); });
}

void AkHostMgmtDelete::printMessageString(int code) {
    if (code == arkeon::status::success) {
        const std::string mappingName = valueOf(args, option::mappingname);
        reportSuccess(
            messageText(mappingRemoved, mappingName.c_str(), resolvedHostId.c_str()), operationLog);
    }
}

void AkHostMgmtDelete::printHelp() {
    printSynopsis(synopsis);
}

void AkHostMgmtDelete::printUsage() {
    printUsageText(synopsis, description, examples);
}
