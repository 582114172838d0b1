#include "platform/HttpsFixture.h"

#include <cstdlib>
#include <gmock/gmock.h>

using support::ScopedVariable;
using support::TlsScriptServer;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

const char* const mediaType = "application/vnd.arkeon+json;version=6.0";

/// What a server got for one request.
class HttpsRequestTest : public HttpsTest {
protected:
    HttpsRequestTest()
        : server_(goodSettings(), {{plainReply()}}),
          client_("127.0.0.1", server_.port(), 1, AKCurlSessionType::rest, nullptr) {}

    std::string onlyRequest() const {
        const std::vector<std::string> requests = server_.requests();
        EXPECT_THAT(requests, SizeIs(1));
        return requests.empty() ? std::string() : requests.front();
    }

    std::string host() const {
        return "Host: 127.0.0.1:" + std::to_string(server_.port()) + "\r\n";
    }

    TlsScriptServer server_;
    AKClientCURL client_;
};

TEST_F(HttpsRequestTest, GetHasNoBodyAndNothingThatWasNotAskedFor) {
    client_.addHeaderField("Accept: ", mediaType);
    ASSERT_EQ(client_.Get("arkeon/config/hosts/"), 0) << log_.text();
    const std::string request = onlyRequest();
    EXPECT_THAT(request, StartsWith("GET /arkeon/config/hosts/ HTTP/1.1\r\n" + host()));
    EXPECT_THAT(request, HasSubstr(std::string("\r\nAccept: ") + mediaType + "\r\n"));
    EXPECT_THAT(request, HasSubstr("\r\nAccept-Encoding: "));
    EXPECT_THAT(request, HasSubstr("gzip"));
    for (const char* name :
         {"Content-Type:", "Content-Length:", "Authorization:", "Cookie:", "Expect:",
          "User-Agent:"}) {
        EXPECT_THAT(request, Not(HasSubstr(name)));
    }
}

TEST_F(HttpsRequestTest, DeleteHasNoBody) {
    ASSERT_EQ(client_.Delete("hosts/1"), 0);
    EXPECT_THAT(onlyRequest(), StartsWith("DELETE /hosts/1 HTTP/1.1\r\n"));
    EXPECT_THAT(onlyRequest(), Not(HasSubstr("Content-")));
}

TEST_F(HttpsRequestTest, PutCarriesItsBodyAndItsType) {
    ASSERT_EQ(client_.Put("hosts/1", R"({"isShared":false})"), 0);
    const std::string request = onlyRequest();
    EXPECT_THAT(request, StartsWith("PUT /hosts/1 HTTP/1.1\r\n"));
    EXPECT_THAT(request, HasSubstr(std::string("\r\nContent-Type: ") + mediaType + "\r\n"));
    EXPECT_THAT(request, HasSubstr("\r\nContent-Length: 18\r\n"));
    EXPECT_TRUE(request.ends_with("\r\n\r\n{\"isShared\":false}")) << request;
    EXPECT_THAT(request, Not(HasSubstr("Expect:")));
    EXPECT_EQ(request.find("Content-Type"), request.rfind("Content-Type"));
}

TEST_F(HttpsRequestTest, PatchIsCalledPatch) {
    ASSERT_EQ(client_.Patch("hosts/1", "{}"), 0);
    EXPECT_THAT(onlyRequest(), StartsWith("PATCH /hosts/1 HTTP/1.1\r\n"));
    EXPECT_THAT(onlyRequest(), HasSubstr(std::string("\r\nContent-Type: ") + mediaType + "\r\n"));
}

TEST_F(HttpsRequestTest, PostIsCalledPost) {
    ASSERT_EQ(client_.Post("hosts", "{}"), 0);
    EXPECT_THAT(onlyRequest(), StartsWith("POST /hosts HTTP/1.1\r\n"));
    EXPECT_THAT(onlyRequest(), HasSubstr(std::string("\r\nContent-Type: ") + mediaType + "\r\n"));
}

TEST_F(HttpsRequestTest, EmptyBodyHasLengthZero) {
    ASSERT_EQ(client_.Post("hosts", ""), 0);
    EXPECT_THAT(onlyRequest(), HasSubstr("\r\nContent-Length: 0\r\n"));
}

TEST_F(HttpsRequestTest, LargeBodyIsSentWithoutAskingFirst) {
    const std::string body(std::size_t{3} * 1024 * 1024, 'x');
    ASSERT_EQ(client_.Put("hosts/1", body), 0) << log_.text();
    const std::string request = onlyRequest();
    EXPECT_THAT(request.substr(0, request.find("\r\n\r\n")), Not(HasSubstr("Expect")));
    EXPECT_TRUE(request.ends_with("\r\n\r\n" + body));
}

TEST_F(HttpsRequestTest, BodyMayHoldEveryByte) {
    const std::string body("a\0b\xff\r\n\r\n", 8);
    ASSERT_EQ(client_.Put("hosts/1", body), 0);
    EXPECT_TRUE(onlyRequest().ends_with("\r\n\r\n" + body));
}

TEST_F(HttpsRequestTest, HeaderWithEmptyValueReachesTheWire) {
    client_.setupAcceptCurlOption("X-Arkeon-Audit-Reason: ");
    ASSERT_EQ(client_.Delete("hosts/1"), 0);
    EXPECT_THAT(onlyRequest(), HasSubstr("\r\nX-Arkeon-Audit-Reason:\r\n"));
}

TEST_F(HttpsRequestTest, HeaderLineIsSentAsItIs) {
    client_.setupAcceptCurlOption("X-Arkeon-Audit-Reason: a%20b; c: d");
    client_.setupAcceptCurlOption("X-A:b");
    ASSERT_EQ(client_.Delete("hosts/1"), 0);
    EXPECT_THAT(onlyRequest(), HasSubstr("\r\nX-A:b\r\n"));
    EXPECT_THAT(onlyRequest(), HasSubstr("\r\nX-Arkeon-Audit-Reason: a%20b; c: d\r\n"));
}

TEST_F(HttpsRequestTest, TokenGoesIntoTheAuthorizationHeaderAndNowhereElse) {
    writeLogin("127.0.0.1", server_.port());
    const LoginWithUserTokenManager tokens(server_.port(), "", "", "", "", 1);
    AKClientCURL client("127.0.0.1", server_.port(), 1, AKCurlSessionType::rest, &tokens);
    ASSERT_EQ(client.Get("hosts"), 0);
    const std::string line = std::string("\r\nAuthorization: Bearer ") + testToken + "\r\n";
    EXPECT_THAT(onlyRequest(), HasSubstr(line));
    EXPECT_EQ(onlyRequest().find(testToken), onlyRequest().rfind(testToken));
    EXPECT_NE(client.Get("hosts"), 0);
    EXPECT_THAT(log_.text(), Not(HasSubstr(testToken)));
}

TEST_F(HttpsRequestTest, ReplyIsLoggedWithTargetStatusSizeAndDuration) {
    ASSERT_EQ(client_.Get("hosts"), 0);
    EXPECT_THAT(
        log_.text(),
        ContainsRegex("2 arkeon: GET /hosts: HTTP status 200, 2 bytes, [0-9]{1,4} ms\n"));
}

TEST_F(HttpsRequestTest, HostCertificateIsPresented) {
    ASSERT_EQ(client_.Get("hosts"), 0);
    EXPECT_EQ(server_.clientName(), testHostId);
}

TEST_F(HttpsRequestTest, NoProxyWhateverTheEnvironmentSays) {
    TlsScriptServer proxy(goodSettings(), {});
    const std::string address = "http://127.0.0.1:" + std::to_string(proxy.port());
    const ScopedVariable https("https_proxy", address);
    const ScopedVariable all("ALL_PROXY", address);
    const ScopedVariable allLower("all_proxy", address);
    EXPECT_EQ(client_.Get("hosts"), 0);
    EXPECT_EQ(proxy.connections(), 0);
}

TEST_F(HttpsRequestTest, SessionKeysAreNotWrittenWhateverTheEnvironmentSays) {
    const std::string keys = root_.file("keys");
    const ScopedVariable variable("SSLKEYLOGFILE", keys);
    ASSERT_EQ(client_.Get("hosts"), 0);
    EXPECT_FALSE(std::filesystem::exists(keys));
}

TEST_F(HttpsRequestTest, EnvironmentDoesNotSayWhatANameMeans) {
    const ScopedVariable aliases("HOSTALIASES", root_.file("aliases"));
    const ScopedVariable domain("LOCALDOMAIN", "elsewhere.example");
    useLimits({});
    ASSERT_EQ(client_.Get("hosts"), 0);
    EXPECT_EQ(std::getenv("HOSTALIASES"), nullptr);
    EXPECT_EQ(std::getenv("LOCALDOMAIN"), nullptr);
}

TEST_F(HttpsRequestTest, NetrcIsNotRead) {
    home_.write(".netrc", "machine 127.0.0.1 login somebody password secret\n");
    const ScopedVariable variable("HOME", home_.path());
    ASSERT_EQ(client_.Get("hosts"), 0);
    EXPECT_THAT(onlyRequest(), Not(HasSubstr("Authorization")));
}

/// URIs that reach the server byte for byte.
class HttpsTargetTest : public HttpsRequestTest, public testing::WithParamInterface<const char*> {};

TEST_P(HttpsTargetTest, GoesOutByteForByte) {
    ASSERT_EQ(client_.Delete(GetParam()), 0) << log_.text();
    EXPECT_THAT(
        onlyRequest(), StartsWith(std::string("DELETE /") + GetParam() + " HTTP/1.1\r\n" + host()));
}

INSTANTIATE_TEST_SUITE_P(
    Uris, HttpsTargetTest,
    testing::Values(
        "a#b", "a?b?c#d", "a//b", "/a", "...", ".a/b.", "a?../.", "%2e%2e%2e/%00", "a\\b",
        "\xc3\xa4/\xff", "http://other.invalid/", "@other.invalid:1/", "*", ""));

TEST_F(HttpsTest, HeadersGoWithEveryRequestAndOnlyNotesOfTheLastReplyAreKept) {
    TlsScriptServer server(
        goodSettings(), {{plainReply("first", "201 Created")}, {plainReply("second")}});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    client.addHeaderField("X-One: ", "1");
    ASSERT_EQ(client.Get("a"), 0);
    EXPECT_EQ(client.httpStatus(), 201);
    ASSERT_EQ(client.Put("b", "{}"), 0);
    EXPECT_EQ(client.httpStatus(), 200);
    EXPECT_EQ(client.takeBody(), "second");
    EXPECT_THAT(
        server.requests(),
        ElementsAre(HasSubstr("\r\nX-One: 1\r\n"), HasSubstr("\r\nX-One: 1\r\n")));
}

TEST_F(HttpsTest, CookiesOfAReplyAreNotSentBack) {
    const std::string reply = "HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 0\r\n\r\n";
    TlsScriptServer server(goodSettings(), {{reply}, {reply}});
    AKClientCURL client("127.0.0.1", server.port(), 1, AKCurlSessionType::rest, nullptr);
    ASSERT_EQ(client.Get("a"), 0);
    ASSERT_EQ(client.Get("b"), 0);
    EXPECT_THAT(server.requests().at(1), Not(HasSubstr("Cookie")));
}

TEST_F(HttpsTest, Ipv6AddressWorksWithAndWithoutBrackets) {
    support::TlsServerSettings settings = goodSettings();
    settings.address = "::1";
    settings.identity = identityFor({"::1"});
    writeCertificateInfo({"::1"});
    TlsScriptServer server(settings, {{plainReply()}, {plainReply()}});
    writeLogin("::1", server.port());
    const LoginWithUserTokenManager tokens(server.port(), "", "", "", "", 1);
    for (const char* name : {"::1", "[::1]"}) {
        AKClientCURL client(name, server.port(), 1, AKCurlSessionType::rest, &tokens);
        EXPECT_EQ(client.Get("hosts"), 0) << name << log_.text();
    }
    const std::string host = "Host: [::1]:" + std::to_string(server.port()) + "\r\n";
    EXPECT_THAT(server.requests(), ElementsAre(HasSubstr(host), HasSubstr(host)));
}

}  // namespace
