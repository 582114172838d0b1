#include "hostmgmt/server/PrimaryServer.h"

#include "arkeon/AKClientCURL.h"
#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/console.h"
#include "arkeon/host_identity.h"
#include "arkeon/master_config.h"
#include "arkeon/media_type.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Messages.h"
#include "hostmgmt/Json.h"
#include "hostmgmt/OptionNames.h"
#include "hostmgmt/server/ServerErrors.h"

#include <optional>
#include <stdexcept>

using arkeon::Console;
using arkeon::Status;
namespace status = arkeon::status;

namespace {

constexpr int serverPort = 1556;

constexpr CatalogueText masterConfigUnreadable = catalogued(
    "SmeDup0500N", "Error occurred during initialization, check master configuration file");
constexpr CatalogueText noMasterServerRecord =
    catalogued("SmeSlp0450N", "%s: no master server record found");
constexpr CatalogueText noMasterServerName =
    catalogued("SmeSlp0460N", "%s: no master server name found");
constexpr CatalogueText mappingDoesNotExist =
    catalogued("NecErr8901N", "The mapping name that was provided does not exist.");

// What is wrong with the configuration; null if it names a primary server.
const CatalogueText* masterConfigFault() {
    if (AK_read_master_config() != status::success) {
        return &masterConfigUnreadable;
    }
    const PrimaryServerRecord* record = get_master_config_ptr()->primary_server;
    if (record == nullptr) {
        return &noMasterServerRecord;
    }
    const bool named = record->name != nullptr && *record->name != '\0';
    return named ? nullptr : &noMasterServerName;
}

bool isSuccess(CurlRequestType method, int httpCode) {
    // A 204 to a PUT, POST or GET is a failure on purpose: their replies have a body.
    const bool mayBeEmpty = method == CURL_DELETE || method == CURL_PATCH;
    return httpCode == httpStatus::ok || httpCode == httpStatus::created ||
           (httpCode == httpStatus::noContent && mayBeEmpty);
}

ServerReply failed(Status status) {
    return {status, 0, {}};
}

}  // namespace

int localCertificateType() {
    return IsActiveClusterNode() ? clusterCertificateType : hostCertificateType;
}

void logReply(const ServerReply& reply, const CLogcmd& log) {
    log.logit(
        {"Http return code : ", std::to_string(reply.httpStatus),
         ", Response string : ", reply.body},
        logLevel::ordinary);
}

std::string PrimaryServer::name() const {
    if (isGiven(args_, option::server)) {
        return valueOf(args_, option::server);
    }
    if (const CatalogueText* fault = masterConfigFault(); fault != nullptr) {
        const std::string text = messageText(*fault, commandName);
        Console::standard().writeError(text + "\n");
        log_.logit(text, logLevel::failure);
        // Not caught by anyone, on purpose: the process aborts.
        throw std::logic_error(getECMessage(status::noPrimaryServer));
    }
    return get_master_config_ptr()->primary_server->name;
}

std::string PrimaryServer::uri(
    OperationType operation, const std::string& hostId, const std::string& encodedName) const {
    std::string uri = resourceUri(operation, hostId, encodedName);
    log_.logit({"serverUri is: ", uri}, logLevel::ordinary);
    return uri;
}

ServerReply PrimaryServer::request(const ServerRequest& request) const {
    ServerReply reply = exchange(request);
    if (isSuccess(request.method, reply.httpStatus)) {
        log_.logit("Curl request is successful.", logLevel::ordinary);
    } else if (isLoginFailure(reply.status)) {
        // For 117 and 118 the status report asks for the login a second time.
        printLoginRequired();
        reportStatus(reply.status, log_);
        return reply;
    } else if (reply.status != status::success) {
        reportStatus(reply.status, log_);
    } else {
        JsonPayload payload(log_);
        const int code =
            readErrorReply(reply.body, payload, log_).value_or(status::unreadableReply);
        if (request.method == CURL_DELETE && code == status::unknownName) {
            reportStatus(status::unknownMapping, messageText(mappingDoesNotExist), log_);
            reply.status = status::unknownMapping;
            return reply;
        }
        reportServerError(code, reply.httpStatus);
        reply.status = Status{code};
    }
    logReply(reply, log_);
    return reply;
}

void PrimaryServer::reportServerError(int code, int httpCode) const {
    reportStatus(code, log_);
    if (code != status::success) {
        log_.logit("API Response Error Code: " + std::to_string(code), logLevel::failure);
    }
    log_.logit("URI Return Code: " + std::to_string(httpCode), logLevel::failure);
}

ServerReply PrimaryServer::exchange(const ServerRequest& request) const {
    const std::string server = name();
    if (server.empty()) {
        log_.logit("Master Server not found", logLevel::failure);
        return failed(status::noPrimaryServer);
    }
    log_.logit("Master server is: " + server, logLevel::ordinary);

    std::optional<LoginWithUserTokenManager> tokens;
    if (request.login == USER_LOGIN) {
        // The user's login is that of certificate type 1, even on a cluster.
        tokens.emplace(serverPort, "", "", "", "", hostCertificateType);
    }
    AKClientCURL client(
        server, serverPort, localCertificateType(), AKCurlSessionType::rest,
        tokens ? &*tokens : nullptr);
    std::string uri;
    if (const Status failure = prepare(client, request, uri); failure != status::success) {
        return failed(failure);
    }
    if (const Status failure = perform(client, request, uri); failure != status::success) {
        return failed(failure);
    }
    return {status::success, client.httpStatus(), client.takeBody()};
}

Status
PrimaryServer::prepare(AKClientCURL& client, const ServerRequest& request, std::string& uri) const {
    std::string encodedName;
    if (const Status failure = encodeName(client, request.name, encodedName);
        failure != status::success) {
        return failure;
    }
    uri = this->uri(request.operation, request.hostId, encodedName);
    // Unreachable: every operation has a resource.
    if (uri.empty()) {
        Console::standard().writeError("URI is empty\n");
        log_.logit("URI is empty", logLevel::failure);
        reportStatus(status::emptyUri, log_);
        return status::emptyUri;
    }
    client.addHeaderField("Accept: ", AK_MEDIA_TYPE_VERSION);
    std::string auditHeader;
    if (const Status failure = auditHeaderLine(client, auditHeader); failure != status::success) {
        return failure;
    }
    if (request.method != CURL_GET) {
        client.setupAcceptCurlOption(auditHeader);  // even without a reason
    }
    return status::success;
}

Status PrimaryServer::encodeName(
    AKClientCURL& client, const std::string& plain, std::string& encoded) const {
    const Status result{client.encodeUriString(plain, encoded)};
    if (result != status::success) {
        const std::string text =
            "Unable to encode hostname : " + plain + ", error : " + std::to_string(result);
        log_.logit(text, logLevel::ordinary);
        Console::standard().writeError(text + "\n");
    }
    return result;
}

Status PrimaryServer::auditHeaderLine(AKClientCURL& client, std::string& line) const {
    const std::string reason = valueOf(args_, option::reason);
    std::string encoded;
    if (const Status failure{client.encodeUriString(reason, encoded)}; failure != status::success) {
        log_.logit(
            "Unable to encode reason: " + reason + ", error: " + std::to_string(failure),
            logLevel::ordinary);
        return failure;
    }
    log_.logit("Encoded reason: " + encoded, logLevel::ordinary);
    line = "X-Arkeon-Audit-Reason: " + encoded;
    return status::success;
}

Status PrimaryServer::perform(
    AKClientCURL& client, const ServerRequest& request, const std::string& uri) const {
    int result = status::success;
    switch (request.method) {
    case CURL_GET:
        result = client.Get(uri);
        break;
    case CURL_PUT:
        result = client.Put(uri, request.body);
        break;
    case CURL_DELETE:
        result = client.Delete(uri);
        break;
    case CURL_PATCH:
        result = client.Patch(uri, request.body);
        break;
    case CURL_POST:
        result = client.Post(uri, request.body);
        break;
    default:
        // Unreachable: every operation has one of the five methods.
        Console::standard().writeError(
            "Unknown Request Type " + std::to_string(request.method) + "\n");
        log_.logit("Unknown Request Type", logLevel::failure);
        return status::generalFailure;
    }
    if (result != status::success) {
        log_.logit(
            "Failed to perform curl request for URI :" + uri + " retval :" + std::to_string(result),
            logLevel::failure);
    }
    return Status{result};
}
