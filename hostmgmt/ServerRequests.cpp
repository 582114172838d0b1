// The requests to the primary server.

#include "arkeon/AKClientCURL.h"
#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/console.h"
#include "arkeon/host_identity.h"
#include "arkeon/status.h"
#include "hostmgmt/AkHostMgmtBaseOption.h"

#include <optional>

using arkeon::Console;

namespace {

constexpr int serverPort = 1556;

constexpr CatalogueText mappingDoesNotExist =
    catalogued("NecErr8901N", "The mapping name that was provided does not exist.");

bool isSuccess(CurlRequestType method, int httpCode) {
    // A 204 to a PUT, POST or GET is a failure: these have something to say.
    const bool mayBeEmpty = method == CURL_DELETE || method == CURL_PATCH;
    return httpCode == httpStatus::ok || httpCode == httpStatus::created ||
           (httpCode == httpStatus::noContent && mayBeEmpty);
}

int callClient(
    AKClientCURL& client, CurlRequestType method, const std::string& uri, const std::string& body) {
    switch (method) {
    case CURL_PUT:
        return client.Put(uri, body);
    case CURL_DELETE:
        return client.Delete(uri);
    case CURL_PATCH:
        return client.Patch(uri, body);
    case CURL_POST:
        return client.Post(uri, body);
    default:
        return client.Get(uri);
    }
}

}  // namespace

bool isLoginFailure(int status) {
    return status == arkeon::status::notLoggedIn || status == arkeon::status::loginRefused ||
           status == arkeon::status::loginExpired;
}

int AkHostMgmtBaseOption::sendRequest(
    OperationType operation, CurlRequestType method, const std::string& body,
    const char* targetName, const char* hostId, std::string& response, int& httpCode,
    LoginType login) {
    int result =
        curlSendRequest(operation, hostId, targetName, method, body, response, httpCode, login);
    if (isSuccess(method, httpCode)) {
        operationLog.logit("Curl request is successful.", logLevel::ordinary);
        result = arkeon::status::success;
    } else if (isLoginFailure(result)) {
        // For 117 and 118 the status report asks for the login a second time.
        showWebLoginRequired();
        submitErrorStringForWebApi(result);
        return result;
    } else if (result != arkeon::status::success) {
        submitErrorStringForWebApi(result);
    } else {
        long errorCode = 0;
        logErrorMessage(response, errorCode);
        if (method == CURL_DELETE && errorCode == arkeon::status::unknownName) {
            return reportUnknownMapping();
        }
        result = reportServerError(errorCode, httpCode);
    }
    operationLog.logit(
        {"Http return code : ", std::to_string(httpCode), ", Response string : ", response},
        logLevel::ordinary);
    return result;
}

int AkHostMgmtBaseOption::sendChange(
    OperationType operation, CurlRequestType method, const std::string& body,
    const std::string& mappingName, const std::string& hostId, int& httpCode) {
    std::string response;
    return sendRequest(
        operation, method, body, mappingName.c_str(), hostId.c_str(), response, httpCode,
        USER_LOGIN);
}

int AkHostMgmtBaseOption::reportUnknownMapping() const {
    showStatus(arkeon::status::unknownMapping, messageText(mappingDoesNotExist));
    return arkeon::status::unknownMapping;
}

int AkHostMgmtBaseOption::reportServerError(long errorCode, int httpCode) const {
    const int code = static_cast<int>(errorCode);
    submitErrorStringForWebApi(code);
    if (code != 0) {
        operationLog.logit("API Response Error Code: " + std::to_string(code), logLevel::failure);
    }
    operationLog.logit("URI Return Code: " + std::to_string(httpCode), logLevel::failure);
    return code;
}

int AkHostMgmtBaseOption::curlSendRequest(
    OperationType operation, const char* hostId, const char* targetName, CurlRequestType method,
    const std::string& body, std::string& response, int& httpCode, LoginType login) {
    const std::string server = getMasterServer();
    if (server.empty()) {
        operationLog.logit("Master Server not found", logLevel::failure);
        return arkeon::status::noPrimaryServer;
    }
    operationLog.logit("Master server is: " + server, logLevel::ordinary);

    std::optional<LoginWithUserTokenManager> tokens;
    if (login == USER_LOGIN) {
        // The user's login is that of certificate type 1, also on a cluster.
        tokens.emplace(serverPort, "", "", "", "", hostCertificateType);
    }
    AKClientCURL client(
        server, serverPort, localCertificateType(), AKCurlSessionType::rest,
        tokens ? &*tokens : nullptr);
    std::string encodedName;
    if (const int failure = encodeName(client, targetName, encodedName);
        failure != arkeon::status::success) {
        return failure;
    }
    const std::string uri = getURI(operation, hostId, encodedName);
    // No operation leads here: every one of them has a resource.
    if (uri.empty()) {
        Console::standard().writeError("URI is empty\n");
        operationLog.logit("URI is empty", logLevel::failure);
        submitErrorStringForWebApi(arkeon::status::emptyUri);
        return arkeon::status::emptyUri;
    }
    client.addHeaderField("Accept: ", std::string(AK_MEDIA_TYPE_VERSION));
    std::string auditHeader;
    if (const int failure = auditHeaderLine(client, auditHeader);
        failure != arkeon::status::success) {
        return failure;
    }
    if (const int failure = perform(client, method, uri, body, auditHeader);
        failure != arkeon::status::success) {
        return failure;
    }
    response = client.takeBody();
    httpCode = client.httpStatus();
    return arkeon::status::success;
}

int AkHostMgmtBaseOption::encodeName(
    AKClientCURL& client, const std::string& plain, std::string& encoded) const {
    const int failure = client.encodeUriString(plain, encoded);
    if (failure != arkeon::status::success) {
        const std::string text =
            "Unable to encode hostname : " + plain + ", error : " + std::to_string(failure);
        operationLog.logit(text, logLevel::ordinary);
        Console::standard().writeError(text + "\n");
    }
    return failure;
}

int AkHostMgmtBaseOption::auditHeaderLine(AKClientCURL& client, std::string& line) const {
    const std::string text = valueOf(option::reason);
    std::string encoded;
    if (const int failure = client.encodeUriString(text, encoded);
        failure != arkeon::status::success) {
        operationLog.logit(
            "Unable to encode reason: " + text + ", error: " + std::to_string(failure),
            logLevel::ordinary);
        return failure;
    }
    operationLog.logit("Encoded reason: " + encoded, logLevel::ordinary);
    line = "X-Arkeon-Audit-Reason: " + encoded;
    return arkeon::status::success;
}

int AkHostMgmtBaseOption::perform(
    AKClientCURL& client, CurlRequestType method, const std::string& uri, const std::string& body,
    const std::string& auditHeader) const {
    // No operation leads here either.
    if (method < CURL_GET || method > CURL_POST) {
        Console::standard().writeError("Unknown Request Type " + std::to_string(method) + "\n");
        operationLog.logit("Unknown Request Type", logLevel::failure);
        return arkeon::status::generalFailure;
    }
    if (method != CURL_GET) {
        client.setupAcceptCurlOption(auditHeader);  // also when no reason was given
    }
    const int result = callClient(client, method, uri, body);
    if (result != arkeon::status::success) {
        operationLog.logit(
            "Failed to perform curl request for URI :" + uri + " retval :" + std::to_string(result),
            logLevel::failure);
    }
    return result;
}
