#include "arkeon/AKClientCURL.h"

#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/status.h"
#include "https/PrivateMemory.h"
#include "https/RequestText.h"
#include "https/ServerAddress.h"
#include "https/Transfer.h"
#include "log/Report.h"

#include <exception>
#include <vector>

namespace status = arkeon::status;

/// The server, what goes with every request to it, and its last reply.
struct AKClientCURL::Session {
    std::string server;
    int port = 0;
    int certType = 0;
    const LoginWithUserTokenManager* tokens = nullptr;
    std::vector<std::string> headerLines;
    arkeon::Reply reply;

    int send(const char* method, const std::string& uri, const std::string* body);

private:
    int sendChecked(const char* method, const std::string& uri, const std::string* body);
    int checkServer() const;
    int addHeaders(arkeon::Request& request) const;
    int addToken(arkeon::Request& request) const;
};

int AKClientCURL::Session::checkServer() const {
    if (arkeon::isServerName(server)) {
        return status::success;
    }
    arkeon::report({"not a server name: \"", server, "\""});
    return status::invalidServerName;
}

int AKClientCURL::Session::addHeaders(arkeon::Request& request) const {
    for (const std::string& line : headerLines) {
        const auto header = arkeon::curlHeader(line);
        if (!header) {
            arkeon::report({"not a header line: \"", line, "\""});
            return status::invalidRequestAddress;
        }
        request.headers.push_back(*header);
    }
    if (request.body != nullptr) {
        request.headers.emplace_back("Content-Type: application/vnd.arkeon+json;version=6.0");
        // A header without a value is libcurl's way to leave one out.
        request.headers.emplace_back("Expect:");
    }
    return status::success;
}

int AKClientCURL::Session::addToken(arkeon::Request& request) const {
    if (tokens == nullptr) {
        return status::success;
    }
    std::string token;
    const int result = tokens->findToken(server, token);
    if (result == status::success) {
        request.headers.push_back("Authorization: Bearer " + token);
    }
    return result;
}

int AKClientCURL::Session::sendChecked(
    const char* method, const std::string& uri, const std::string* body) {
    arkeon::Request request{method, server, port, "/" + uri, {}, body};
    int result = checkServer();
    if (result == status::success && !arkeon::isRequestAddress(uri)) {
        arkeon::report({"not a request address: \"", uri, "\""});
        result = status::invalidRequestAddress;
    }
    if (result == status::success) {
        result = addHeaders(request);
    }
    arkeon::Credentials credentials;
    if (result == status::success) {
        arkeon::keepMemoryPrivate();
        result = arkeon::readCredentials(certType, server, credentials);
    }
    if (result == status::success) {
        result = addToken(request);
    }
    return result == status::success ? arkeon::transfer(request, credentials, reply) : result;
}

int AKClientCURL::Session::send(
    const char* method, const std::string& uri, const std::string* body) {
    reply = {};
    try {
        return sendChecked(method, uri, body);
    } catch (const std::exception& failure) {
        arkeon::report({"HTTPS request: ", failure.what()});
        return status::clientFailure;
    }
}

AKClientCURL::AKClientCURL(
    const std::string& server, int port, int certType, AKCurlSessionType /*sessionType*/,
    const LoginWithUserTokenManager* tokens)
    : session_(std::make_unique<Session>()) {
    session_->server = server;
    session_->port = port;
    session_->certType = certType;
    session_->tokens = tokens;
}

AKClientCURL::~AKClientCURL() = default;

int AKClientCURL::encodeUriString(const std::string& in, std::string& out) {
    out.clear();
    try {
        out = arkeon::percentEncoded(in);
    } catch (const std::exception& failure) {
        arkeon::report({"encoding a URI: ", failure.what()});
        return status::clientFailure;
    }
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
