#include "hostmgmt/AkHostMgmtList.h"

#include "arkeon/console.h"
#include "arkeon/status.h"

#include <iterator>
#include <utility>

using arkeon::Console;

namespace {

const PARAMETERS paramList[] = {
    optionRow(1, option::server, parameterTypes::string),
    optionRow(2, option::hostid, parameterTypes::string),
    optionRow(3, option::host, parameterTypes::string),
    optionRow(4, option::shortOutput, parameterTypes::none),
    optionRow(5, option::json, parameterTypes::none),
    optionRow(6, option::jsonCompact, parameterTypes::none),
    optionRow(7, option::approved, parameterTypes::none),
    optionRow(8, option::pending, parameterTypes::none),
    optionRow(9, option::conflict, parameterTypes::none),
    optionRow(10, option::apvmappings, parameterTypes::none),
    optionRow(11, option::help, parameterTypes::none),
};

// `-apvmappings` is left out on purpose.
constexpr CatalogueText synopsis = catalogued(
    "SmeHmm0007N", "%s { {-li | -list} [{-l | -short} | {-j | -json} | { -jc | -json_compact}] \n"
                   "\t [{-i | -hostid} <hostid> | \n"
                   "\t {-n | -host} <host> | \n"
                   "\t {-ap | -approved} | \n"
                   "\t {-p | -pending} | \n"
                   "\t {-cf | -conflict}]\n"
                   "\t [{-s | -server} <master_server>] }");
constexpr CatalogueText description = catalogued(
    "SmeHmm0010N",
    "Description:\n"
    "Lists host ID-to-host name(or IP address) mappings for long, short, json, and json_compact "
    "output format.\n"
    "\n"
    "Examples:\n");
constexpr const char* examples =
    "akhostmgmt -list\n"
    "akhostmgmt -list -server testserver\n"
    "akhostmgmt -list -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -short\n"
    "akhostmgmt -list -host testhost -json\n"
    "akhostmgmt -list -approved -json_compact\n"
    "akhostmgmt -list -pending\n"
    "akhostmgmt -list -conflict\n";
constexpr CatalogueText nothingForHost =
    catalogued("SmeHmm0040N", "Mappings for the specified host do not exist.");
constexpr CatalogueText nothingForOption =
    catalogued("SmeHmm0017N", "Mappings for the specified option do not exist.");

}  // namespace

/// What to ask the server for.
struct AkHostMgmtList::Query {
    OperationType operation = OP_ALL_HOSTS;
    LoginType login = USER_LOGIN;
    std::string hostName;
    std::string hostId;
};

AkHostMgmtList::AkHostMgmtList(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::lst), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtList::checkArguments() {
    CBasecmd::checkArguments();
    rejectHelpAlias();
    rejectBoth(option::hostid, option::host);
    rejectBoth(option::shortOutput, option::json);
    rejectBoth(option::shortOutput, option::jsonCompact);
    rejectBoth(option::json, option::jsonCompact);
    rejectSlashes(option::host, messages::hostNameHoldsSlashes);
    rejectSlashes(option::hostid, messages::hostIdHoldsSlashes);
    rejectLongerThan(longestHostName, option::host);
    countFilters();
}

void AkHostMgmtList::countFilters() {
    // -apvmappings counts but is not named: the synopsis does not show it.
    constexpr std::pair<OptionName, bool> filters[] = {
        {option::hostid, true},  {option::host, true},     {option::approved, true},
        {option::pending, true}, {option::conflict, true}, {option::apvmappings, false},
    };
    optionCount = 0;
    std::string names;
    for (const auto& [filter, named] : filters) {
        if (isGiven(filter)) {
            ++optionCount;
            names += named ? std::string(filter.name) + " " : "";
        }
    }
    if (optionCount >= 2) {
        refuse(selectExactlyOne, messageText(messages::selectExactlyOne) + " " + names);
    }
}

int AkHostMgmtList::execute() {
    Query query;
    if (const int failure = chooseQuery(query); failure != arkeon::status::success) {
        return failure;
    }
    std::string response;
    int httpCode = 0;
    const int result = sendRequest(
        query.operation, CURL_GET, "", query.hostName.c_str(), query.hostId.c_str(), response,
        httpCode, query.login);
    if (result != arkeon::status::success || httpCode != httpStatus::ok) {
        return result;
    }
    if (isGiven(option::hostid) || ownMappings) {
        printOutput(std::move(response));
        return arkeon::status::success;
    }
    return printHosts(std::move(response));
}

int AkHostMgmtList::chooseQuery(Query& query) {
    if (isGiven(option::hostid) && !isGiven(option::host)) {
        operationLog.logit("List operation, Host Id supplied", logLevel::ordinary);
        query.operation = OP_HOST_ID;
        query.hostId = valueOf(option::hostid);
        hostList = false;
    } else if (isGiven(option::host)) {
        query.operation = OP_MAPPED_HOST_NAME;
        query.hostName = valueOf(option::host);
    } else if (isGiven(option::approved)) {
        operationLog.logit("List operation, Approved supplied", logLevel::ordinary);
        query.operation = OP_APPROVED;
    } else if (isGiven(option::pending)) {
        operationLog.logit("List operation, Pending supplied", logLevel::ordinary);
        query.operation = OP_PENDING;
    } else if (isGiven(option::conflict)) {
        operationLog.logit("List operation, Conflict supplied", logLevel::ordinary);
        query.operation = OP_CONFLICT;
    } else if (isGiven(option::apvmappings)) {
        operationLog.logit("List operation, apvmappings supplied", logLevel::ordinary);
        query.operation = OP_HOST_APPROVED;
        query.login = HOST_CERTIFICATE;
        ownMappings = true;
        return findOwnHostId(query.hostId);
    } else {
        operationLog.logit("List operation, no option supplied", logLevel::ordinary);
        // The count is always 0 here; a filter that the chain above does not know must not list
        // all.
        query.operation = optionCount == 0 ? OP_ALL_MAPPINGS : OP_ALL_HOSTS;
        listOperation = OP_ALL_MAPPINGS;
    }
    return arkeon::status::success;
}

int AkHostMgmtList::findOwnHostId(std::string& hostId) {
    const int failure = getHostIDfromCertmapinfo(hostId);
    if (failure != arkeon::status::success) {
        operationLog.logit(
            "\ngetHostIDfromCertmapinfo() failed, retval = " + std::to_string(failure),
            logLevel::failure);
        return failure;
    }
    operationLog.logit(
        "\nFetched HostId : " + hostId + ", Return code : " + std::to_string(failure),
        logLevel::ordinary);
    return failure;
}

int AkHostMgmtList::printHosts(std::string response) {
    if (const int failure = loadReply(response); failure != arkeon::status::success) {
        submitErrorStringForWebApi(arkeon::status::unreadableReply);
        return failure;
    }
    replyParsed = true;
    if (json_array_size(json_object_get(payload.get(), "hosts")) == 0) {
        return reportNothingFound();
    }
    printOutput(std::move(response));
    return arkeon::status::success;
}

int AkHostMgmtList::reportNothingFound() {
    if (!isGiven(option::host)) {
        Console::standard().write(messageText(nothingForOption) + "\n");
        return arkeon::status::success;
    }
    Console::standard().writeError(
        statusLine(arkeon::status::noMappings, messageText(nothingForHost)));
    return arkeon::status::noMappings;
}

void AkHostMgmtList::printHelp() {
    showSynopsis(synopsis);
}

void AkHostMgmtList::printUsage() {
    showUsage(synopsis, description, examples);
}
