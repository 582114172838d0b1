#include "arkeon/AKClientCURL.h"

#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/debug_log.h"
#include "arkeon/media_type.h"
#include "arkeon/status.h"
#include "client/Credentials.h"
#include "client/HttpsModule.h"
#include "client/RequestText.h"
#include "log/Report.h"
#include "text/ServerNames.h"

#include <chrono>
#include <vector>

namespace status = arkeon::status;
using arkeon::Status;

namespace {

/// Logs a reply: "GET /arkeon/config/hosts/: HTTP status 200, 1234 bytes, 12 ms".
void logReply(
    const arkeon::HttpsRequest& request, const arkeon::HttpsReply& reply,
    std::chrono::steady_clock::duration duration) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(duration);
    logmsg(
        arkeon::logLevel::ordinary,
        {request.method, " ", request.target, ": HTTP status ", std::to_string(reply.httpStatus),
         ", ", std::to_string(reply.body.size()), " bytes, ", std::to_string(milliseconds.count()),
         " ms"},
        arkeon::platformName);
}

}  // namespace

/// The server, what is sent with every request to it, and its last reply.
struct AKClientCURL::Session {
    std::string server;
    int port = 0;
    int certType = 0;
    const LoginWithUserTokenManager* tokens = nullptr;
    std::vector<std::string> headerLines;
    arkeon::HttpsReply reply;

    Status send(const char* method, const std::string& uri, const std::string* body);

private:
    Status checkTexts(const std::string& uri) const;
    Status addHeaders(arkeon::HttpsRequest& request) const;
    Status addToken(arkeon::HttpsRequest& request) const;
    Status transfer(const arkeon::HttpsRequest& request, const arkeon::Credentials& credentials);
};

Status AKClientCURL::Session::checkTexts(const std::string& uri) const {
    if (!arkeon::isServerName(server)) {
        arkeon::report({"not a server name: \"", server, "\""});
        return status::invalidServerName;
    }
    if (!arkeon::isRequestTarget(uri)) {
        arkeon::report({"not a request address: \"", uri, "\""});
        return status::invalidRequestTarget;
    }
    return status::success;
}

Status AKClientCURL::Session::addHeaders(arkeon::HttpsRequest& request) const {
    for (const std::string& line : headerLines) {
        const auto header = arkeon::curlHeader(line);
        if (!header) {
            arkeon::report({"not a header line: \"", line, "\""});
            return status::invalidRequestTarget;
        }
        request.headers.push_back(*header);
    }
    if (request.body != nullptr) {
        request.headers.push_back("Content-Type: " + AK_MEDIA_TYPE_VERSION);
        // A header without a value makes libcurl omit it.
        request.headers.emplace_back("Expect:");
    }
    return status::success;
}

Status AKClientCURL::Session::addToken(arkeon::HttpsRequest& request) const {
    if (tokens == nullptr) {
        return status::success;
    }
    std::string token;
    const Status result = tokens->findToken(server, token);
    if (result == status::success) {
        request.headers.push_back("Authorization: Bearer " + token);
    }
    return result;
}

Status AKClientCURL::Session::transfer(
    const arkeon::HttpsRequest& request, const arkeon::Credentials& credentials) {
    arkeon::HttpsTransport* transport = arkeon::httpsTransport();
    if (transport == nullptr) {
        return status::clientFailure;
    }
    const auto start = std::chrono::steady_clock::now();
    reply = transport->send(request, credentials);
    if (reply.status == status::success) {
        logReply(request, reply, std::chrono::steady_clock::now() - start);
    } else {
        arkeon::report(
            {"HTTPS request to ", server, ", port ", std::to_string(port), ": ", reply.reason});
    }
    return reply.status;
}

/// The order of the checks is the one that the header documents.
Status
AKClientCURL::Session::send(const char* method, const std::string& uri, const std::string* body) {
    reply = {};
    arkeon::HttpsRequest request{method, arkeon::urlHost(server), port, "/" + uri, {}, body};
    if (const Status failure = checkTexts(uri); failure != status::success) {
        return failure;
    }
    if (const Status failure = addHeaders(request); failure != status::success) {
        return failure;
    }
    arkeon::Credentials credentials;
    if (const Status failure = arkeon::readCredentials(certType, server, credentials);
        failure != status::success) {
        return failure;
    }
    if (const Status failure = addToken(request); failure != status::success) {
        return failure;
    }
    return transfer(request, credentials);
}

AKClientCURL::AKClientCURL(
    const std::string& server, int port, int certType, AKCurlSessionType /*sessionType*/,
    const LoginWithUserTokenManager* tokens, const std::string& /*unused*/, bool /*unused*/,
    bool /*unused*/, bool /*unused*/, const std::string& /*unused*/, const std::string& /*unused*/,
    const std::string& /*unused*/, bool /*unused*/, bool /*unused*/)
    : session_(std::make_unique<Session>()) {
    session_->server = server;
    session_->port = port;
    session_->certType = certType;
    session_->tokens = tokens;
}

AKClientCURL::~AKClientCURL() = default;

int AKClientCURL::encodeUriString(const std::string& in, std::string& out) {
    out = arkeon::percentEncoded(in);
    return status::success;
}

void AKClientCURL::addHeaderField(const std::string& name, const std::string& value) {
    session_->headerLines.push_back(name + value);
}

void AKClientCURL::setupAcceptCurlOption(std::string header) {
    session_->headerLines.push_back(std::move(header));
}

int AKClientCURL::Get(const std::string& uri) {
    return session_->send("GET", uri, nullptr);
}

int AKClientCURL::Delete(const std::string& uri) {
    return session_->send("DELETE", uri, nullptr);
}

int AKClientCURL::Put(const std::string& uri, const std::string& body) {
    return session_->send("PUT", uri, &body);
}

int AKClientCURL::Patch(const std::string& uri, const std::string& body) {
    return session_->send("PATCH", uri, &body);
}

int AKClientCURL::Post(const std::string& uri, const std::string& body) {
    return session_->send("POST", uri, &body);
}

int AKClientCURL::httpStatus() const {
    return session_->reply.httpStatus;
}

std::string AKClientCURL::takeBody() {
    return std::move(session_->reply.body);
}
