#include "support/FakeClient.h"

#include "arkeon/AKClientCURL.h"
#include "arkeon/LoginWithUserTokenManager.h"
#include "platform/client/RequestText.h"

#include <gtest/gtest.h>

namespace support {

namespace {

FakeClient* scripted = nullptr;

}  // namespace

FakeClient::FakeClient(std::deque<FakeReply> replies) : replies_(std::move(replies)) {
    scripted = this;
}

FakeClient::~FakeClient() {
    EXPECT_TRUE(replies_.empty()) << replies_.size() << " scripted replies were not asked for";
    scripted = nullptr;
}

FakeClient& FakeClient::current() {
    return *scripted;
}

FakeReply FakeClient::answer(const FakeRequest& request) {
    requests.push_back(request);
    if (replies_.empty()) {
        ADD_FAILURE() << "unexpected request: " << request.method << " " << request.uri;
        return {7629, 0, ""};
    }
    FakeReply reply = replies_.front();
    replies_.pop_front();
    return reply;
}

}  // namespace support

using support::FakeClient;

struct AKClientCURL::Session {
    support::FakeRequest request;
    support::FakeReply reply;

    int send(const char* method, const std::string& uri, const std::string& body) {
        request.method = method;
        request.uri = uri;
        request.body = body;
        reply = FakeClient::current().answer(request);
        return reply.result;
    }
};

AKClientCURL::AKClientCURL(
    const std::string& server, int port, int certType, AKCurlSessionType /*sessionType*/,
    const LoginWithUserTokenManager* tokens, const std::string& /*unused*/, bool /*unused*/,
    bool /*unused*/, bool /*unused*/, const std::string& /*unused*/, const std::string& /*unused*/,
    const std::string& /*unused*/, bool /*unused*/, bool /*unused*/)
    : session_(new Session) {
    session_->request.server = server;
    session_->request.port = port;
    session_->request.certType = certType;
    session_->request.withToken = tokens != nullptr;
}

AKClientCURL::~AKClientCURL() = default;

int AKClientCURL::encodeUriString(const std::string& in, std::string& out) {
    const FakeClient& script = FakeClient::current();
    out.clear();
    if (!script.unencodable.empty() && in == script.unencodable) {
        return script.encoderStatus;
    }
    out = arkeon::percentEncoded(in);
    return 0;
}

void AKClientCURL::addHeaderField(const std::string& name, const std::string& value) {
    session_->request.headers.push_back(name + value);
}

void AKClientCURL::setupAcceptCurlOption(std::string header) {
    session_->request.headers.push_back(std::move(header));
}

int AKClientCURL::Get(const std::string& uri) {
    return session_->send("GET", uri, "");
}
int AKClientCURL::Delete(const std::string& uri) {
    return session_->send("DELETE", uri, "");
}

int AKClientCURL::Put(const std::string& uri, const std::string& body) {
    return session_->send("PUT", uri, body);
}

int AKClientCURL::Patch(const std::string& uri, const std::string& body) {
    return session_->send("PATCH", uri, body);
}

int AKClientCURL::Post(const std::string& uri, const std::string& body) {
    return session_->send("POST", uri, body);
}

int AKClientCURL::httpStatus() const {
    return session_->reply.httpStatus;
}

std::string AKClientCURL::takeBody() {
    return std::move(session_->reply.body);
}

LoginWithUserTokenManager::LoginWithUserTokenManager(
    int port, const std::string& user, const std::string& password, const std::string& domain,
    const std::string& domainType, int certType)
    : port_(port) {
    EXPECT_EQ(user + password + domain + domainType, "");
    EXPECT_EQ(port, 1556);
    EXPECT_EQ(certType, 1) << "also on the active node of a cluster";
}

arkeon::Status
LoginWithUserTokenManager::findToken(const std::string& /*server*/, std::string& token) const {
    token = "token for " + std::to_string(port_);
    return arkeon::status::success;
}
