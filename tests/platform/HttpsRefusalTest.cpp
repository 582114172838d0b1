#include "arkeon/status.h"
#include "platform/HttpsFixture.h"

#include <gmock/gmock.h>

using support::TlsScriptServer;
using testing::HasSubstr;

namespace status = arkeon::status;

namespace {

/// Requests that are refused before anything is sent.
class HttpsRefusalTest : public HttpsTest {
public:
    ~HttpsRefusalTest() override { EXPECT_EQ(server_.connections(), 0); }

protected:
    HttpsRefusalTest() : server_(goodSettings(), {}) {}

    AKClientCURL client(const LoginWithUserTokenManager* tokens = nullptr) const {
        return {"127.0.0.1", server_.port(), 1, AKCurlSessionType::rest, tokens};
    }

    TlsScriptServer server_;
};

TEST_F(HttpsRefusalTest, ServerNamesThatAreNone) {
    for (const char* name :
         {"", ".", "user@127.0.0.1", "127.0.0.1:1", "127.0.0.1/x", "127.0.0.1?x", "127.0.0.1#x",
          "a b", "a..b", "[::1", "::1]", "[::1]:443", "fe80::1%eth0", "a\nb", "m\xc3\xbcller.de",
          "127.1", "256.1.1.1"}) {
        AKClientCURL client(name, server_.port(), 1, AKCurlSessionType::rest, nullptr);
        EXPECT_EQ(client.Get("hosts"), status::invalidServerName) << name;
    }
    EXPECT_THAT(log_.text(), HasSubstr("16 arkeon: not a server name: \"127.0.0.1:1\"\n"));
}

TEST_F(HttpsRefusalTest, UrisThatCannotBeSentAsTheyAre) {
    auto refusing = client();
    const std::string withNul("a\0b", 3);
    for (const std::string& uri :
         {std::string("a b"), std::string(" "), std::string("a\r\nX: y"), std::string("a\tb"),
          std::string("a\x7f"), std::string("a\x1f"), withNul}) {
        EXPECT_EQ(refusing.Get(uri), status::invalidRequestTarget) << uri;
        EXPECT_EQ(refusing.Put(uri, "{}"), status::invalidRequestTarget) << uri;
    }
    EXPECT_THAT(log_.text(), HasSubstr("16 arkeon: not a request address: \"a b\"\n"));
}

TEST_F(HttpsRefusalTest, UrisWithDotSegments) {
    auto rejecting = client();
    for (const char* uri :
         {".", "..", "ID/hostmappings/..", "ID/./comment", "../x", "a/%2e", "a/%2E%2e/b", ".%2e",
          "a/..?b", "a/..#b", "..#/b"}) {
        EXPECT_EQ(rejecting.Delete(uri), status::invalidRequestTarget) << uri;
    }
}

TEST_F(HttpsRefusalTest, HeaderLinesThatCannotBeSentAsTheyAre) {
    const std::string withNul("X-A: a\0b", 8);
    for (const std::string& line :
         {std::string("X-A: a\r\nX-B: c"), std::string("X-A: a\n"), std::string("X-A: a\tb"),
          std::string("X-A: \x7f"), std::string("no colon"), std::string("no-colon"),
          std::string(": no name"), std::string("X A: blank in the name"), std::string("X;A: b"),
          std::string(), withNul}) {
        auto refusing = client();
        refusing.setupAcceptCurlOption(line);
        EXPECT_EQ(refusing.Get("hosts"), status::invalidRequestTarget) << line;
    }
    auto refusing = client();
    refusing.addHeaderField("Accept: ", "a\r\nb: c");
    EXPECT_EQ(refusing.Delete("hosts"), status::invalidRequestTarget);
    EXPECT_THAT(log_.text(), HasSubstr("16 arkeon: not a header line: \"no colon\"\n"));
}

TEST_F(HttpsRefusalTest, PortsThatAreNone) {
    for (const int port : {0, -1, 65536}) {
        AKClientCURL refusing("127.0.0.1", port, 1, AKCurlSessionType::rest, nullptr);
        EXPECT_EQ(refusing.Get("hosts"), status::invalidServerName) << port;
    }
}

TEST_F(HttpsRefusalTest, NoCertificateInformation) {
    writeCertificateInfo({"other.example"});
    EXPECT_EQ(client().Get("hosts"), status::noCertificateEntry);
    std::filesystem::remove(root_.file("etc/certificates.toml"));
    EXPECT_EQ(client().Get("hosts"), status::noCertificateEntry);
    root_.write("etc/certificates.toml", "[[certificate]\n");
    EXPECT_EQ(client().Get("hosts"), status::malformedCertificateInfo);
}

TEST_F(HttpsRefusalTest, LoginThatCannotBeUsed) {
    const LoginWithUserTokenManager tokens(server_.port(), "", "", "", "", 1);
    auto refusing = client(&tokens);
    EXPECT_EQ(refusing.Get("hosts"), status::notLoggedIn);
    home_.write("arkeon/logins.json", "{}");
    EXPECT_EQ(refusing.Get("hosts"), status::unusableLogin);
    home_.write(
        "arkeon/logins.json", R"({"logins": [{"server": "127.0.0.1", "port": )" +
                                  std::to_string(server_.port()) +
                                  R"(, "token": "t", "expires": 1}]})");
    EXPECT_EQ(refusing.Get("hosts"), status::loginExpired);
}

TEST_F(HttpsRefusalTest, TheServersNameIsCheckedFirstThenTheAddressThenTheCertificates) {
    const LoginWithUserTokenManager tokens(1, "", "", "", "", 1);
    root_.write("etc/certificates.toml", "not TOML");
    AKClientCURL nameless("", 1, 1, AKCurlSessionType::rest, &tokens);
    EXPECT_EQ(nameless.Get("a b"), status::invalidServerName);
    AKClientCURL named("127.0.0.1", 1, 1, AKCurlSessionType::rest, &tokens);
    EXPECT_EQ(named.Get("a b"), status::invalidRequestTarget);
    EXPECT_EQ(named.Get("a"), status::malformedCertificateInfo);
    writeCertificateInfo({"127.0.0.1"});
    EXPECT_EQ(named.Get("a"), status::notLoggedIn);
}

TEST_F(HttpsTest, RefusedRequestLeavesNothingOfTheReplyBefore) {
    const TlsScriptServer server(goodSettings(), {{plainReply("old")}});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    ASSERT_EQ(client.Get("a"), 0);
    EXPECT_EQ(client.httpStatus(), 200);
    EXPECT_EQ(client.Get("a b"), status::invalidRequestTarget);
    EXPECT_EQ(client.httpStatus(), 0);
    EXPECT_EQ(client.takeBody(), "");
}

TEST_F(HttpsTest, RequestTooLargeForLibcurlIsAFailureOfTheClient) {
    std::string tooLong;
    tooLong.resize(9'000'000, 'a');
    const TlsScriptServer server(goodSettings(), {{plainReply()}});
    EXPECT_EQ(get(server.port(), tooLong), status::clientFailure);
    EXPECT_THAT(server.requests(), testing::IsEmpty());
}

TEST_F(HttpsTest, EveryByteButTheUnreservedOnesIsEncoded) {
    AKClientCURL client("127.0.0.1", 1, 1, AKCurlSessionType::rest, nullptr);
    std::string encoded = "before";
    EXPECT_EQ(client.encodeUriString("", encoded), 0);
    EXPECT_EQ(encoded, "");
    EXPECT_EQ(client.encodeUriString("aZ09-._~", encoded), 0);
    EXPECT_EQ(encoded, "aZ09-._~");
    EXPECT_EQ(client.encodeUriString("a b/c?d#e%f+g:\xc3\xa4\n", encoded), 0);
    EXPECT_EQ(encoded, "a%20b%2Fc%3Fd%23e%25f%2Bg%3A%C3%A4%0A");
    EXPECT_EQ(client.encodeUriString(std::string("\0\x7f", 2), encoded), 0);
    EXPECT_EQ(encoded, "%00%7F");
}

}  // namespace
