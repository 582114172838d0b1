#include "hostmgmt/operations/AkHostMgmtList.h"

#include "arkeon/console.h"
#include "hostmgmt/ArgumentRules.h"
#include "hostmgmt/OperationOutput.h"

#include <iterator>
#include <new>
#include <utility>

using arkeon::Console;

namespace {

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

// Indented by 3, keys in the server's order.
constexpr std::size_t jsonFlags = JSON_INDENT(3) | JSON_PRESERVE_ORDER;

struct JsonOutput {
    Console& console;
    bool outOfMemory = false;
};

// Writes nothing after a failure: jansson ignores one in a member's name, and continues.
int writeJson(const char* text, std::size_t size, void* context) {
    JsonOutput& output = *static_cast<JsonOutput*>(context);
    try {
        if (!output.outOfMemory) {
            output.console.write({text, size});
        }
    } catch (const std::bad_alloc&) {  // must not pass through jansson
        output.outOfMemory = true;
    }
    return output.outOfMemory ? -1 : 0;
}

void printJson(const json_t* value) {
    JsonOutput output{Console::standard()};
    const int result = json_dump_callback(value, writeJson, &output, jsonFlags);
    checkJson(result == 0 && !output.outOfMemory);
}

}  // namespace

const PARAMETERS AkHostMgmtList::paramList[] = {
    optionRow(1, option::server, parameterTypes::stringValue),
    optionRow(2, option::hostid, parameterTypes::stringValue),
    optionRow(3, option::host, parameterTypes::stringValue),
    optionRow(4, option::shortOutput, parameterTypes::noValue),
    optionRow(5, option::json, parameterTypes::noValue),
    optionRow(6, option::jsonCompact, parameterTypes::noValue),
    optionRow(7, option::approved, parameterTypes::noValue),
    optionRow(8, option::pending, parameterTypes::noValue),
    optionRow(9, option::conflict, parameterTypes::noValue),
    optionRow(10, option::apvmappings, parameterTypes::noValue),
    optionRow(11, option::help, parameterTypes::noValue),
};

AkHostMgmtList::AkHostMgmtList(CArgscmd newArgs, CLogcmd& commandLog)
    : AkHostMgmtBaseOption(
          nameOrAlias(newArgs, operation::lst), newArgs, paramList, std::size(paramList),
          commandLog) {}

void AkHostMgmtList::checkArguments() {
    CBasecmd::checkArguments();
    const ArgumentRules rules(args, operationLog);
    rules.rejectHelpAlias();
    rules.rejectBoth(option::hostid, option::host);
    rules.rejectBoth(option::shortOutput, option::json);
    rules.rejectBoth(option::shortOutput, option::jsonCompact);
    rules.rejectBoth(option::json, option::jsonCompact);
    rules.rejectSlashes(option::host, hostNameHasSlashes);
    rules.rejectSlashes(option::hostid, hostIdHasSlashes);
    rules.rejectLongerThan(maxHostName, option::host);
    countFilters(rules);
}

void AkHostMgmtList::countFilters(const ArgumentRules& rules) {
    // -apvmappings counts but is not named: the synopsis does not show it.
    constexpr std::pair<OptionName, bool> filters[] = {
        {option::hostid, true},  {option::host, true},     {option::approved, true},
        {option::pending, true}, {option::conflict, true}, {option::apvmappings, false},
    };
    optionCount = 0;
    std::string names;
    for (const auto& [filter, named] : filters) {
        if (isGiven(args, filter)) {
            ++optionCount;
            names += named ? std::string(filter.name) + " " : "";
        }
    }
    if (optionCount >= 2) {
        rules.reject(selectExactlyOne, messageText(messages::selectExactlyOne) + " " + names);
    }
}

int AkHostMgmtList::execute() {
    ServerRequest query;
    if (const int failure = chooseQuery(query); failure != arkeon::status::success) {
        return failure;
    }
    ServerReply reply = server().request(query);
    if (reply.status != arkeon::status::success || reply.httpStatus != httpStatus::ok) {
        return reply.status;
    }
    if (isGiven(args, option::hostid) || ownMappings) {
        printOutput(std::move(reply.body));
        return arkeon::status::success;
    }
    return printHosts(std::move(reply.body));
}

int AkHostMgmtList::chooseQuery(ServerRequest& query) {
    if (isGiven(args, option::hostid) && !isGiven(args, option::host)) {
        operationLog.logit("List operation, Host Id supplied", logLevel::ordinary);
        query.operation = OP_HOST_ID;
        query.hostId = valueOf(args, option::hostid);
        hostList = false;
    } else if (isGiven(args, option::host)) {
        query.operation = OP_MAPPED_HOST_NAME;
        query.name = valueOf(args, option::host);
    } else if (isGiven(args, option::approved)) {
        operationLog.logit("List operation, Approved supplied", logLevel::ordinary);
        query.operation = OP_APPROVED;
    } else if (isGiven(args, option::pending)) {
        operationLog.logit("List operation, Pending supplied", logLevel::ordinary);
        query.operation = OP_PENDING;
    } else if (isGiven(args, option::conflict)) {
        operationLog.logit("List operation, Conflict supplied", logLevel::ordinary);
        query.operation = OP_CONFLICT;
    } else if (isGiven(args, option::apvmappings)) {
        operationLog.logit("List operation, apvmappings supplied", logLevel::ordinary);
        query.operation = OP_HOST_APPROVED;
        query.login = HOST_CERTIFICATE;
        ownMappings = true;
        return readOwnHostId(query.hostId);
    } else {
        operationLog.logit("List operation, no option supplied", logLevel::ordinary);
        // The count is always 0 here; the test would keep a filter that is not handled above from
        // listing all mappings.
        query.operation = optionCount == 0 ? OP_ALL_MAPPINGS : OP_ALL_HOSTS;
        listOperation = OP_ALL_MAPPINGS;
    }
    return arkeon::status::success;
}

int AkHostMgmtList::readOwnHostId(std::string& hostId) {
    const int result = getHostIDfromCertmapinfo(hostId);
    if (result != arkeon::status::success) {
        operationLog.logit(
            "\ngetHostIDfromCertmapinfo() failed, retval = " + std::to_string(result),
            logLevel::failure);
        return result;
    }
    operationLog.logit(
        "\nFetched HostId : " + hostId + ", Return code : " + std::to_string(result),
        logLevel::ordinary);
    return result;
}

int AkHostMgmtList::printHosts(std::string response) {
    if (const int failure = payload.load(response); failure != arkeon::status::success) {
        submitErrorStringForWebApi(arkeon::status::unreadableReply);
        return failure;
    }
    replyParsed = true;
    if (json_array_size(json_object_get(payload, "hosts")) == 0) {
        return reportNothingFound();
    }
    printOutput(std::move(response));
    // Releasing a large reply takes time and the process is about to end, so it stays reachable.
    static JsonRef& printedReply = *new JsonRef;
    printedReply = payload.take();
    return arkeon::status::success;
}

int AkHostMgmtList::reportNothingFound() {
    if (!isGiven(args, option::host)) {
        Console::standard().write(messageText(nothingForOption) + "\n");
        return arkeon::status::success;
    }
    Console::standard().writeError(
        statusLine(arkeon::status::noMappings, messageText(nothingForHost)));
    return arkeon::status::noMappings;
}

void AkHostMgmtList::printOutput(std::string response) {
    Console& console = Console::standard();
    if (isGiven(args, option::jsonCompact)) {
        console.write(response);
        console.write("\n");
        return;
    }
    if (!replyParsed && payload.load(response) != arkeon::status::success) {
        submitErrorStringForWebApi(arkeon::status::unreadableReply);
        return;
    }
    replyParsed = false;
    std::string().swap(response);  // only the parsed reply is needed now; the text may be large
    if (isGiven(args, option::json)) {
        printJson(payload);
    } else if (!hostList) {
        printer().printSingleHost(payload);
    } else if (ownMappings) {
        printMappedHostNames(payload, "");
    } else {
        printer().printHosts(json_object_get(payload, "hosts"));
    }
}

ListPrinter AkHostMgmtList::printer() const {
    return {isGiven(args, option::shortOutput), listOperation == OP_ALL_MAPPINGS};
}

void AkHostMgmtList::printMappedHostNames(json_t* host, const char* primaryName) {
    printer().printMappings(host, primaryName);
}

void AkHostMgmtList::printSortedHostNames(json_t* host, const char* /*primaryName*/) {
    printer().printSortedRows(host);
}

void AkHostMgmtList::printFilteredHostName(
    json_t* mappings, unsigned long count, const std::string& filter) {
    printer().printRows(mappings, count, filter);
}

int AkHostMgmtList::primaryHostExist(const json_t* host, const char* primaryName) const {
    return hasMapping(host, primaryName) ? 1 : 0;
}

void AkHostMgmtList::printHelp() {
    printSynopsis(synopsis);
}

void AkHostMgmtList::printUsage() {
    printUsageText(synopsis, description, examples);
}
