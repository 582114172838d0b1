#include "arkeon/status.h"
#include "platform/HttpsFixture.h"

#include <chrono>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using support::Ending;
using support::TlsScriptServer;
using support::TlsServerSettings;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

namespace status = arkeon::status;

namespace {

using Clock = std::chrono::steady_clock;

/// A port of 127.0.0.1 on which nobody listens while the object lives.
class ClosedPort {
public:
    ClosedPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(socket_, generic, length), 0);
        EXPECT_EQ(getsockname(socket_, generic, &length), 0);
        port_ = ntohs(address.sin_port);
    }
    ~ClosedPort() { close(socket_); }
    ClosedPort(const ClosedPort&) = delete;
    ClosedPort& operator=(const ClosedPort&) = delete;
    int port() const { return port_; }

private:
    int socket_;
    int port_ = 0;
};

TEST_F(HttpsTest, UnknownNameIsNotResolved) {
    writeCertificateInfo({"nosuchhost.invalid"});
    AKClientCURL client("nosuchhost.invalid", 1556, 1, AKCurlSessionType::rest, nullptr);
    EXPECT_EQ(client.Get("hosts"), status::unresolvedServer);
    EXPECT_THAT(
        log_.text(),
        HasSubstr("HTTPS request to nosuchhost.invalid, port 1556: Could not resolve"));
}

TEST_F(HttpsTest, RefusedConnection) {
    const ClosedPort closed;
    EXPECT_EQ(get(closed.port()), status::noConnection);
    EXPECT_THAT(log_.text(), HasSubstr("Failed to connect"));
}

TEST_F(HttpsTest, ServerThatNeverFinishesConnecting) {
    arkeon::TransferLimits limits;
    limits.connectMilliseconds = 300;
    useLimits(limits);
    TlsServerSettings settings = goodSettings();
    settings.handshake = false;
    const TlsScriptServer server(settings, {});
    const auto start = Clock::now();
    EXPECT_EQ(get(server.port()), status::timedOut) << log_.text();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

/// What a server sends before it stops.
class HttpsStallTest : public HttpsTest, public testing::WithParamInterface<const char*> {};

TEST_P(HttpsStallTest, IsGivenUp) {
    arkeon::TransferLimits limits;
    limits.stallSeconds = 1;
    useLimits(limits);
    const TlsScriptServer server(goodSettings(), {{GetParam(), Ending::stall}});
    EXPECT_EQ(get(server.port()), status::timedOut) << log_.text();
    EXPECT_THAT(server.requests(), SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(
    Sent, HttpsStallTest,
    testing::Values("", "HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc"));

TEST_F(HttpsTest, TheTimesAreHalfAMinuteAndTwoMinutes) {
    EXPECT_EQ(arkeon::TransferLimits().connectMilliseconds, 30000);
    EXPECT_EQ(arkeon::TransferLimits().stallSeconds, 120);
}

TEST_F(HttpsTest, RequestsToOneServerShareOneConnectionAndHandshake) {
    const TlsScriptServer server(
        goodSettings(), {{plainReply()}, {plainReply()}, {plainReply("", "201 Created")}});
    EXPECT_EQ(get(server.port()), 0);
    EXPECT_EQ(get(server.port()), 0);
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    EXPECT_EQ(client.Put("hosts/1", "{}"), 0);
    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(server.handshakes(), 1);
    EXPECT_THAT(server.requests(), SizeIs(3));
}

TEST_F(HttpsTest, OtherServersHaveConnectionsOfTheirOwn) {
    const TlsScriptServer one(goodSettings(), {{plainReply("one")}});
    const TlsScriptServer two(goodSettings(), {{plainReply("two")}});
    EXPECT_EQ(get(one.port()), 0);
    EXPECT_EQ(get(two.port()), 0);
    EXPECT_EQ(one.connections(), 1);
    EXPECT_EQ(two.connections(), 1);
}

TEST_F(HttpsTest, KeptConnectionIsNotUsedWithAnotherAuthority) {
    const TlsScriptServer server(goodSettings(), {{plainReply()}, {plainReply()}});
    ASSERT_EQ(get(server.port()), 0);
    const auto other = devserver::CertificateAuthority::create("Other authority");
    root_.write("certs/ca.pem", other.certificatePem());
    EXPECT_EQ(get(server.port()), status::untrustedServer);
    EXPECT_THAT(server.requests(), SizeIs(1));
}

/// How a kept connection dies when the next request has arrived.
class HttpsResendTest : public HttpsTest,
                        public testing::WithParamInterface<std::tuple<const char*, Ending>> {
protected:
    static int send(AKClientCURL& client, std::string_view method) {
        const std::string uri = "hosts/1";
        if (method == "GET") {
            return client.Get(uri);
        }
        if (method == "DELETE") {
            return client.Delete(uri);
        }
        if (method == "PUT") {
            return client.Put(uri, "{}");
        }
        return method == "PATCH" ? client.Patch(uri, "{}") : client.Post(uri, "{}");
    }
};

TEST_P(HttpsResendTest, RequestIsNeverSentTwice) {
    const auto& [method, ending] = GetParam();
    const TlsScriptServer server(goodSettings(), {{plainReply()}, {"", ending}, {plainReply()}});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    ASSERT_EQ(client.Get("first"), 0);
    EXPECT_EQ(send(client, method), status::connectionBroke) << log_.text();
    EXPECT_THAT(
        server.requests(),
        ElementsAre(StartsWith("GET /first "), StartsWith(std::string(method) + " /hosts/1 ")));
    EXPECT_EQ(server.connections(), 1);
    EXPECT_THAT(log_.text(), HasSubstr("HTTPS request to 127.0.0.1, port "));
    EXPECT_EQ(send(client, method), 0) << "a new request makes a new connection";
    EXPECT_EQ(server.connections(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Methods, HttpsResendTest,
    testing::Combine(
        testing::Values("GET", "DELETE", "PUT", "PATCH", "POST"),
        testing::Values(Ending::drop, Ending::closeNotify, Ending::reset)));

/// How a server ends a connection after a reply that did not announce it.
class HttpsIdleEndTest : public HttpsTest, public testing::WithParamInterface<Ending> {};

TEST_P(HttpsIdleEndTest, ConnectionThatEndedBetweenTwoRequestsIsReplaced) {
    const TlsScriptServer server(
        goodSettings(), {{plainReply(), GetParam()}, {plainReply()}, {plainReply()}});
    ASSERT_EQ(get(server.port()), 0);
    server.waitForEndings(1);
    EXPECT_EQ(get(server.port()), 0) << log_.text();
    EXPECT_EQ(get(server.port()), 0) << log_.text();
    EXPECT_EQ(server.connections(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Endings, HttpsIdleEndTest, testing::Values(Ending::drop, Ending::closeNotify));

TEST_F(HttpsTest, ServersThatWantNewKeysBeforeAReplyGetThem) {
    for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        support::TlsServerSettings settings = goodSettings();
        settings.highestVersion = version;
        const support::ScriptedReply reply{plainReply("keys"), Ending::keep, true};
        TlsScriptServer server(settings, {reply, reply, reply});
        AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(client.Patch("hosts/1", "{}"), 0) << version << log_.text();
            EXPECT_EQ(client.takeBody(), "keys");
        }
        EXPECT_THAT(server.requests(), testing::SizeIs(3));
    }
}

TEST_F(HttpsTest, BrokenPipeDoesNotEndTheProcess) {
    const TlsScriptServer server(goodSettings(), {});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    const std::string body(std::size_t{8} * 1024 * 1024, 'x');
    EXPECT_EQ(client.Put("hosts/1", body), status::connectionBroke);
}

}  // namespace
