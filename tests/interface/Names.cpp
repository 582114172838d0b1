// Uses every name of the public headers in its documented form. Compiled only: a name that is lost
// or changes its form breaks callers that were written against the documentation.

#include "arkeon/AKClientCURL.h"
#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/catalogue.h"
#include "arkeon/console.h"
#include "arkeon/debug_log.h"
#include "arkeon/host_identity.h"
#include "arkeon/master_config.h"
#include "arkeon/media_type.h"
#include "arkeon/status.h"
#include "arkeon/status_table.h"
#include "arkeon/text.h"
#include "cmdframework/Argscmd.h"
#include "cmdframework/Basecmd.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Messages.h"
#include "cmdframework/Parameterscmd.h"
#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"
#include "driver/ExecuteAkHostMgmt.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"
#include "hostmgmt/listing/ListLabels.h"
#include "hostmgmt/listing/ListText.h"
#include "hostmgmt/operations/AkHostMgmtAdd.h"
#include "hostmgmt/operations/AkHostMgmtAddHost.h"
#include "hostmgmt/operations/AkHostMgmtComment.h"
#include "hostmgmt/operations/AkHostMgmtDelete.h"
#include "hostmgmt/operations/AkHostMgmtList.h"
#include "hostmgmt/operations/AkHostMgmtReissueCert.h"
#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"

#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>

namespace {

template <typename Type>
constexpr bool is(Type /*value*/) {
    return true;
}

// The entry.

static_assert(is<int (*)(int, char**)>(execute_akhostmgmt));
static_assert(is<void (*)()>(printHelp));

constexpr const char* operations[] = {
    topLevelAkHostMgmtOptions::help,
    topLevelAkHostMgmtOptions::help_alias,
    topLevelAkHostMgmtOptions::add,
    topLevelAkHostMgmtOptions::add_alias,
    topLevelAkHostMgmtOptions::delete_cmd,
    topLevelAkHostMgmtOptions::delete_alias,
    topLevelAkHostMgmtOptions::lst,
    topLevelAkHostMgmtOptions::list_alias,
    topLevelAkHostMgmtOptions::addcomment,
    topLevelAkHostMgmtOptions::addcomment_alias,
    topLevelAkHostMgmtOptions::deletecomment,
    topLevelAkHostMgmtOptions::deletecomment_alias,
    topLevelAkHostMgmtOptions::setautoreissuecert,
    topLevelAkHostMgmtOptions::setautoreissuecert_alias,
    topLevelAkHostMgmtOptions::addhost,
    topLevelAkHostMgmtOptions::addhost_alias,
    topLevelAkHostMgmtOptions::updatehost,
    topLevelAkHostMgmtOptions::updatehost_alias,
};
constexpr const char* options[] = {
    individualAkHostMgmtCommandOptions::server,
    individualAkHostMgmtCommandOptions::server_alias,
};

// The framework.

static_assert(noValue == 0 && stringValue == 1 && pathValue == 2 && unsignedValue == 3);
static_assert(invalidOption == 0 && unknownUsageError == 12 && valueTooLong == 16);
static_assert(logNotOpened == 0 && unknownRunTimeError == 6);
static_assert(std::is_base_of_v<std::map<std::uint32_t, PARAMETERS>, CParameterscmd>);
static_assert(std::is_same_v<decltype(CLogcmd::use_count), unsigned int>);
static_assert(is<bool (CArgscmd::*)(const char*) const>(&CArgscmd::isOptionArgument));

const AllowedValue allowed[] = {{"SmeHmm0037N", "Yes"}};
const PARAMETERS row{1, "server", "s", 0, parameterTypes(1), allowed, 1};

void useArguments(CArgscmd args, const CArgscmd& same) {
    ciCompare less;
    const bool found = args.isCommand("list") || same.exists("list") || same.hasAValue("list") ||
                       less("a", "B") || same.isOptionArgument("-a");
    const std::string text = same.argValue("server") + same.getProgramName() + same.commandLine();
    const unsigned int number = same.numericValue("autoreissue");
    same.pathExists("/");
    same.validate(stringValue, "server");
    static_cast<void>(found);
    static_cast<void>(text);
    static_cast<void>(number);
}

std::string useParameters(CParameterscmd table, const CParameterscmd& same) {
    table.addParameters(&row, 1);
    const bool known = table.find("server") != table.end() && same.find("s") != same.end();
    return known && same.parameterType("server") == 1
               ? same.usageStringFor(stringValue) + same.usageStringFor(row) + same.usageString()
               : "";
}

std::string useFailures() {
    const char* list[] = {"l", "j", nullptr};
    CUsagecmd usage(static_cast<usageExceptions>(13), list);
    usage = CUsagecmd(invalidOption);
    usage = CUsagecmd(invalidOption, "detail");
    usage = CUsagecmd(valueTooLong, "comment", 2048);
    usage.SetUsagemessage("text");
    char buffer[1024];
    usage.message(buffer, sizeof buffer, invalidOption);
    usage.message(buffer, sizeof buffer, invalidOption, "detail");
    CRuntimecmd runTime(logNotOpened);
    runTime = CRuntimecmd(fileNotOpened, "detail");
    runTime = CRuntimecmd(logNotOpened, 13, false);
    runTime = CRuntimecmd(fileNotOpened, "detail", 104, true);
    getMessage(buffer, sizeof buffer, "SmeEmm0016N", "%s%s%s", "a", "b", "c");
    getMessage(buffer, sizeof buffer, "SmeEmm0016N", "%d", 1);
    return std::string(usage.what()) + runTime.what() + std::to_string(runTime.errcode()) +
           runTime.message(logNotOpened) + runTime.message(logNotOpened, "detail") +
           runTime.message(logNotOpened, 13) + getECMessage(7610);
}

void useLog(CLogcmd log, CRuntimecmd& failure) {
    log.init("/directory", "program", "sub-directory", nullptr);
    if (log.logDirectoryExists()) {
        log.logit("text", 2, "name");
        log.logit(std::string("text"), 2, "name");
        log.logit(failure);
    }
}

/// A command of the framework alone.
class Command : public CBasecmd {
public:
    Command(const char* newName, const CArgscmd& newArgs) : CBasecmd(newName, newArgs) {}

    int execute() override {
        checkArguments();
        removeCmdNameFromArgs();
        valueInSet(row, "server");
        validateExpectedParamValue(row, "server");
        logParameters();
        checkReturnStatus();
        log.logit(name, 2, "");
        return returnStatus + static_cast<int>(params.size()) + (args.exists("help") ? 1 : 0);
    }
    void printUsage() override {}
};

// The operations.

using Base = AkHostMgmtBaseOption;
static_assert(Base::OP_MAPPED_HOST_NAME == 0 && Base::OP_HOST_ID == 1 && Base::OP_APPROVED == 2);
static_assert(Base::OP_PENDING == 3 && Base::OP_CONFLICT == 4 && Base::OP_ALL_MAPPINGS == 5);
static_assert(Base::OP_ADD_MAPPING == 6 && Base::OP_DELETE_MAPPING == 7);
static_assert(Base::OP_HOST_APPROVED == 8 && Base::OP_MAPPED_APPROVED == 9);
static_assert(Base::OP_COMMENT == 10 && Base::OP_HOST == 11 && Base::OP_ADD_HOST == 12);
static_assert(Base::OP_ALL_HOSTS == 13);
static_assert(Base::CURL_GET == 0 && Base::CURL_PUT == 1 && Base::CURL_DELETE == 2);
static_assert(Base::CURL_PATCH == 3 && Base::CURL_POST == 4);
static_assert(Base::USER_LOGIN == 0 && Base::HOST_CERTIFICATE == 1);

/// The base of the operations with nothing added.
class Operation : public Base {
public:
    Operation(const CArgscmd& newArgs, CLogcmd& commandLog)
        : Base("add", newArgs, &row, 1, commandLog) {}

    int execute() override {
        std::string text;
        long number = 0;
        int httpCode = 0;
        json_t* value = payload;
        operationLog.logit(value == nullptr ? "" : "payload", 2, nullptr);
        int sum = setJSONObject("key", "value") + setJSONObject("key", json_true());
        sum += loadJSON("{}") + getIntValue("key", number) + getStringValue("key", text);
        const Base::OperationType resource = Base::OperationType(1);
        text += getJSONpayload() + getURI(resource, "id", "name") + getMasterServer();
        sum += sendRequest(
            resource, Base::CurlRequestType(0), "", "name", "id", text, httpCode,
            Base::LoginType(0));
        sum += curlSendRequest(
            resource, "id", "name", Base::CURL_GET, "", text, httpCode, Base::HOST_CERTIFICATE);
        submitErrorStringForWebApi(7610);
        return sum + logErrorMessage("{}", number) + getHostIDfromCertmapinfo(text) + getUuid(text);
    }
    void printUsage() override {}
};

template <typename Class>
void useOperation(CArgscmd args, CLogcmd& log) {
    Class operation(args, log);
    operation.checkArguments();
    static_cast<void>(operation.execute());
    operation.printUsage();
    Class::printHelp();
    static_cast<void>(std::size(Class::paramList));
}

template <typename Class>
void useChange(const CArgscmd& args, CLogcmd& log) {
    useOperation<Class>(args, log);
    Class(args, log).printMessageString(200);
}

int useList(AkHostMgmtList& list, json_t* host) {
    char buffer[40];
    GetLocalizedString(HeaderType(0), buffer, sizeof buffer);
    GetLocalizedBoolString("Yes", buffer, sizeof buffer);
    printAllowAutoReissueDetails(std::int64_t{1});
    list.printOutput("{}");
    list.printMappedHostNames(host, getTrimmedString("hostName", host));
    list.printSortedHostNames(host, "");
    list.printFilteredHostName(host, 0UL, "Yes");
    return list.primaryHostExist(host, "");
}

// The platform.

int useClient(AKClientCURL& client, std::string uri) {
    client.addHeaderField("Accept: ", AK_MEDIA_TYPE_VERSION);
    client.setupAcceptCurlOption("X-Arkeon-Audit-Reason: ");
    return client.encodeUriString(AK_MEDIA_TYPE_JSON + MAX_VERSION, uri) + client.Get(uri) +
           client.Delete(uri) + client.Put(uri, "") + client.Patch(uri, "") + client.Post(uri, "") +
           client.httpStatus() + static_cast<int>(client.takeBody().size());
}

int useConfiguration(char* buffer) {
    const bool named = AK_read_master_config() == 0 && !IsActiveClusterNode() &&
                       get_master_config_ptr()->primary_server->name != nullptr;
    return named ? getHostID(1, "server", buffer, 64) : 37;
}

std::string useCatalogueAndLog(zvlocale locale, char* buffer) {
    int status = zvgetlocaleEx(&locale, &status);
    zvgetmsg("SmeHmm0003N", locale, buffer, 8192UL, "%s is mapped to %s.", "a", "b");
    if (open_debug_log("/directory", "admin", "admin", 0666, &status) >= 0) {
        logmsg(2, "text", "name");
        close_debug_log();
    }
    return getECmsgl(status, locale);
}

}  // namespace

/// Keeps all of the above in use.
void useEverything(CArgscmd args, CLogcmd log) {
    char buffer[8192] = "";
    CRuntimecmd failure(logNotOpened);
    LoginWithUserTokenManager tokens(1556, "", "", "", "", 1);
    AKClientCURL client(
        "server", 1556, 1, AKCurlSessionType(1), &tokens, "", false, false, false, "", "", "",
        false, false);
    AkHostMgmtList list(args, log);
    useArguments(args, args);
    useLog(log, failure);
    useChange<AkHostMgmtAdd>(args, log);
    useChange<AkHostMgmtAddHost>(args, log);
    useChange<AkHostMgmtComment>(args, log);
    useChange<AkHostMgmtDelete>(args, log);
    useChange<AkHostMgmtReissueCert>(args, log);
    useChange<AkHostMgmtUpdateHost>(args, log);
    useOperation<AkHostMgmtList>(args, log);
    AkHostMgmtComment::printAddCommentHelp();
    AkHostMgmtComment::printDeleteCommentHelp();
    const std::string texts = useParameters({&row, 1UL}, {}) + useFailures() +
                              useCatalogueAndLog({}, buffer) + operations[0] + options[0];
    const int sum = Command("list", args).execute() + Operation(args, log).execute() +
                    useList(list, nullptr) + useClient(client, texts) + useConfiguration(buffer);
    static_cast<void>(sum);
}
