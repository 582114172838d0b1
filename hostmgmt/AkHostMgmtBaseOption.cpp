#include "hostmgmt/AkHostMgmtBaseOption.h"

#include "hostmgmt/server/HostLookup.h"
#include "hostmgmt/server/ServerErrors.h"

#include <utility>

namespace status = arkeon::status;

namespace {

// Leaves `response` and `httpCode` unchanged if no reply arrived.
int storeReply(ServerReply reply, std::string& response, int& httpCode) {
    if (reply.httpStatus != 0) {
        response = std::move(reply.body);
        httpCode = reply.httpStatus;
    }
    return reply.status;
}

int storeHostId(HostIdResult result, std::string& hostId) {
    if (result.status == status::success) {
        hostId = std::move(result.hostId);
    }
    return result.status;
}

}  // namespace

AkHostMgmtBaseOption::AkHostMgmtBaseOption(
    const char* newName, CArgscmd newArgs, const PARAMETERS* table, unsigned long count,
    CLogcmd& commandLog)
    : CBasecmd(newName, std::move(newArgs), table, count), operationLog(commandLog),
      payload(operationLog) {}

AkHostMgmtBaseOption::~AkHostMgmtBaseOption() = default;

int AkHostMgmtBaseOption::setJSONObject(const char* key, const char* value) {
    payload.set(key, value);
    return status::success;
}

int AkHostMgmtBaseOption::setJSONObject(const char* key, json_t* value) {
    payload.set(key, value);
    return status::success;
}

std::string AkHostMgmtBaseOption::getJSONpayload() const {
    return payload.compactText();
}

int AkHostMgmtBaseOption::loadJSON(const char* text) {
    return payload.load(text);
}

int AkHostMgmtBaseOption::getIntValue(const char* key, long& value) const {
    return payload.readInteger(key, value);
}

int AkHostMgmtBaseOption::getStringValue(const char* key, std::string& value) const {
    return payload.readString(key, value);
}

std::string AkHostMgmtBaseOption::getURI(
    OperationType operation, const std::string& hostId, const std::string& encodedName) const {
    return server().uri(operation, hostId, encodedName);
}

int AkHostMgmtBaseOption::sendRequest(
    OperationType operation, CurlRequestType method, const std::string& body,
    const char* targetName, const char* hostId, std::string& response, int& httpCode,
    LoginType login) {
    return storeReply(
        server().request({operation, method, body, targetName, hostId, login}), response, httpCode);
}

int AkHostMgmtBaseOption::curlSendRequest(
    OperationType operation, const char* hostId, const char* targetName, CurlRequestType method,
    const std::string& body, std::string& response, int& httpCode, LoginType login) {
    return storeReply(
        server().exchange({operation, method, body, targetName, hostId, login}), response,
        httpCode);
}

int AkHostMgmtBaseOption::logErrorMessage(const std::string& reply, long& errorCode) {
    const std::optional<int> code = readErrorReply(reply, payload, operationLog);
    errorCode = code.value_or(status::unreadableReply);
    return code ? status::success : status::unreadableReply;
}

void AkHostMgmtBaseOption::submitErrorStringForWebApi(int code) const {
    reportStatus(code, operationLog);
}

std::string AkHostMgmtBaseOption::getMasterServer() const {
    return server().name();
}

int AkHostMgmtBaseOption::getHostIDfromCertmapinfo(std::string& hostId) const {
    return storeHostId(findOwnHostId(server(), operationLog), hostId);
}

int AkHostMgmtBaseOption::getUuid(std::string& hostId) {
    return storeHostId(findHostId(args, server(), operationLog), hostId);
}

int AkHostMgmtBaseOption::changeHost(
    const Change& change, const std::function<void()>& fill,
    const std::function<void(int)>& report) {
    if (const int failure = getUuid(resolvedHostId); failure != status::success) {
        return failure;
    }
    fill();
    return sendChange(change, report);
}

int AkHostMgmtBaseOption::sendChange(const Change& change, const std::function<void(int)>& report) {
    const ServerReply reply = server().request(
        {change.operation, change.method, getJSONpayload(), change.mappingName, resolvedHostId,
         USER_LOGIN});
    if (reply.status == status::success) {
        report(reply.httpStatus);
    }
    return reply.status;
}
