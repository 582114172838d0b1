#include "devserver/Json.h"
#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <curl/curl.h>

#include <ctime>
#include <fstream>

namespace {

using namespace devserver;
using namespace devserver::testing;

class Authorization : public ::testing::Test {
protected:
    LocalServer server;
    Client client{server.root(), server.address()};
    TemporaryFolder folder;

    void present(const Identity& identity) {
        const std::string certificate = (folder.path() / "other.pem").string();
        const std::string key = (folder.path() / "other.key").string();
        std::ofstream(certificate) << identity.certificatePem;
        std::ofstream(key) << identity.privateKeyPem;
        client.present(certificate, key);
    }
};

TEST_F(Authorization, ATokenIsNeededForEverythingElse) {
    for (const char* header : {"", "Bearer", "Bearer ", "Bearer wrong", "Basic YTpi"}) {
        const Received reply =
            client.send("GET", hosts + "/hostmappings", nullptr, {{"Authorization", header}});
        EXPECT_EQ(reply.status, 401) << header;
        EXPECT_EQ(reply.errorCode(), 117) << header;
        EXPECT_EQ(reply.headers.at("www-authenticate"), "Bearer");
    }
    const std::string token = tokenOf(server.root());
    for (const std::string& wrong : {token + "0", token.substr(1), std::string("X") + token}) {
        client.use(wrong);
        EXPECT_EQ(client.get(hosts).status, 401);
    }
    client.use(token);
    EXPECT_EQ(client.get(hosts).status, 200);
}

TEST_F(Authorization, TheTokenComesBeforeAnyOtherRule) {
    client.use("wrong");
    EXPECT_EQ(client.get(hosts + "/unknown").status, 401);
    EXPECT_EQ(client.get("/nowhere").status, 401);
    EXPECT_EQ(client.send("DELETE", hosts).status, 401);
    EXPECT_EQ(client.put(hosts + '/' + testhost1 + "/comment", "{}").status, 401);
    EXPECT_EQ(client.send("HEAD", hosts).status, 401);
}

TEST_F(Authorization, AnExpiredTokenSaysSo) {
    server.database().addToken("old", "somebody", std::time(nullptr) - 1);
    server.database().addToken("young", "somebody", std::time(nullptr) + 1000);
    client.use("old");
    const Received reply = client.get(hosts);
    EXPECT_EQ(reply.status, 401);
    EXPECT_EQ(reply.errorCode(), 118);
    client.use("young");
    EXPECT_EQ(client.get(hosts).status, 200);
}

TEST_F(Authorization, TheDatabaseHoldsNoToken) {
    EXPECT_EQ(
        contentOf(server.root() / "hosts.db").find(tokenOf(server.root())), std::string::npos);
}

TEST_F(Authorization, OwnMappingsNeedTheHostCertificateAlone) {
    const std::string own = hosts + '/' + localHostId + "/hostmappings?isapproved=true";
    client.use("");
    const Received reply = client.get(own);
    EXPECT_EQ(reply.status, 200);
    const JsonPtr host = parse(reply.body);
    EXPECT_EQ(textAt(host.get(), "uuid"), localHostId);
    EXPECT_EQ(json_array_size(json_object_get(host.get(), "hostMappings")), 2U);
}

TEST_F(Authorization, ATokenDoesNotOpenAnotherHostsMappings) {
    const Received reply = client.get(hosts + '/' + testhost1 + "/hostmappings?isapproved=true");
    EXPECT_EQ(reply.status, 403);
    EXPECT_EQ(reply.errorCode(), 8712);
    present(server.authority().issueHost(testhost1, validForDays(1)));
    EXPECT_EQ(client.get(hosts + '/' + testhost1 + "/hostmappings?isapproved=true").status, 200);
    EXPECT_EQ(client.get(hosts + '/' + localHostId + "/hostmappings?isapproved=true").status, 403);
}

TEST_F(Authorization, OwnMappingsOfAnUnknownHost) {
    present(server.authority().issueHost("nobody", validForDays(1)));
    client.use("");
    const Received reply = client.get(hosts + "/nobody/hostmappings?isapproved=true");
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(reply.errorCode(), 8701);
}

TEST_F(Authorization, WithoutACertificateThereIsNoReply) {
    client.present("", "");
    const Received reply = client.get(hosts);
    EXPECT_NE(reply.curl, 0);
    EXPECT_EQ(reply.status, 0);
}

TEST_F(Authorization, CertificatesOfOthersAreRefused) {
    present(CertificateAuthority::create("Arkeon development authority")
                .issueHost(localHostId, validForDays(1)));
    EXPECT_NE(client.get(hosts).curl, 0);
    present(server.authority().issueHost(localHostId, validForDays(-1)));
    EXPECT_NE(client.get(hosts).curl, 0);
    present(server.authority().issueServer({"localhost"}, validForDays(1)));
    EXPECT_NE(client.get(hosts).curl, 0);
}

}  // namespace
