#include "devserver/Json.h"
#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace devserver;
using namespace devserver::testing;

class Listing : public ::testing::Test {
protected:
    LocalServer server;
    Client client{server.root(), server.address()};

    std::string listed(const std::string& query) {
        const Received reply = client.get(hosts + "/hostmappings" + query);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.headers.at("content-type"), fullType);
        return inShort(reply.body);
    }
};

TEST_F(Listing, AllHostsAlsoThoseWithoutMappings) {
    const std::string all = listed("");
    EXPECT_EQ(occurrences(all, ";"), 11U);
    EXPECT_NE(all.find("; nomappings:; "), std::string::npos);
    const Received bare = client.get(hosts + "/");
    EXPECT_EQ(inShort(bare.body), all);
    EXPECT_EQ(inShort(client.get(hosts).body), all);
}

TEST_F(Listing, FiltersShowOnlyWhatMatches) {
    EXPECT_EQ(
        listed("?isapproved=false"),
        server.address() + ": 192.0.2.1; testhost1: testhost1.storage.example.com; "
                           "impostor.example.com: testhost1; pendingonly: pendingonly");
    EXPECT_EQ(listed("?isconflict=true"), "impostor.example.com: testhost1");
    const std::string approved = listed("?isapproved=true");
    EXPECT_NE(approved.find("testhost1: testhost1-alias, testhost1; "), std::string::npos);
    EXPECT_NE(approved.find("(none): nullhost; barehost: barehost"), std::string::npos);
    EXPECT_EQ(approved.find("pendingonly"), std::string::npos);
    EXPECT_EQ(approved.find("nomappings"), std::string::npos);
}

TEST_F(Listing, AMappedNameGivesTheHostsThatHaveItWithAllTheirNames) {
    EXPECT_EQ(listed("?mappedhostname=TESTHOST2"), "testhost2: testhost2");
    EXPECT_EQ(
        listed("?mappedhostname=testhost1-ALIAS"),
        "testhost1: testhost1-alias, testhost1, testhost1.storage.example.com");
    EXPECT_EQ(
        listed("?mappedhostname=cluster-vip"), "cluster-node1: cluster-node1, cluster-vip; "
                                               "cluster-node2: cluster-node2, cluster-vip");
    EXPECT_EQ(listed("?mappedhostname=unknown"), "");
    EXPECT_EQ(client.get(hosts + "/hostmappings?mappedhostname=unknown").body, "{\"hosts\":[]}");
    EXPECT_EQ(listed("?mappedhostname=b%C3%BCro-rechner-%C3%A4").substr(0, 5), "b\xc3\xbcro");
}

TEST_F(Listing, AMappedNameMayHaveToBeApproved) {
    EXPECT_EQ(
        listed("?mappedhostname=testhost1&isapproved=true"),
        "testhost1: testhost1-alias, testhost1");
    EXPECT_EQ(listed("?mappedhostname=pendingonly&isapproved=true"), "");
}

TEST_F(Listing, OneHostByItsId) {
    const Received reply = client.get(hosts + '/' + testhost1);
    EXPECT_EQ(reply.status, 200);
    const JsonPtr host = parse(reply.body);
    EXPECT_EQ(textAt(host.get(), "uuid"), testhost1);
    EXPECT_EQ(textAt(host.get(), "comment"), "This host placed in rack1");
    EXPECT_EQ(json_array_size(json_object_get(host.get(), "hostMappings")), 3U);
    const Received encoded = client.get(hosts + "/%31" + testhost1.substr(1));
    EXPECT_EQ(encoded.body, reply.body);
}

TEST_F(Listing, KeysComeInTheirOrder) {
    const JsonPtr host = parse(client.get(hosts + '/' + testhost1).body);
    const std::vector<std::string> expected{
        "uuid",
        "hostName",
        "masterServer",
        "osType",
        "osVersion",
        "installedEEBs",
        "installedPackages",
        "qxUpdatePlatform",
        "hwDescription",
        "cpuArchitecture",
        "akuVersion",
        "isSecureEnabled",
        "comment",
        "autoReissue",
        "trustVersion",
        "autoReissueDuration",
        "externalCertificateSubject",
        "hasArkeonCaHostCertificate",
        "hostMappings"};
    EXPECT_EQ(keysOf(host.get()), expected);
    const std::vector<std::string> mapping{"mappedHostName",  "isApproved", "isConflicting",
                                           "isAddedManually", "isShared",   "createdOn",
                                           "updatedOn"};
    EXPECT_EQ(keysOf(json_array_get(json_object_get(host.get(), "hostMappings"), 0)), mapping);
}

TEST_F(Listing, NullAndMissingKeysStayApart) {
    const std::string all = client.get(hosts + "/hostmappings").body;
    EXPECT_NE(
        all.find("{\"uuid\":\"b5b5b5b5-bbbb-4bb5-9bbb-b5b5b5b5b5b5\",\"hostName\":\"barehost\","
                 "\"hostMappings\":[{\"mappedHostName\":\"barehost\",\"isApproved\":true},"
                 "{\"mappedHostName\":\"barehost-discovered\"}]}"),
        std::string::npos);
    EXPECT_NE(all.find("\"hostName\":null,\"masterServer\":null"), std::string::npos);
    EXPECT_NE(
        all.find("{\"mappedHostName\":null,\"isApproved\":null,\"isConflicting\":null,"
                 "\"isAddedManually\":null,\"isShared\":null,\"createdOn\":null,"
                 "\"updatedOn\":null}"),
        std::string::npos);
}

/// Every kind of thing that a listing can show is among the sample hosts.
TEST_F(Listing, SamplesShowEverything) {
    const JsonPtr root = parse(client.get(hosts + "/hostmappings").body);
    const json_t* all = json_object_get(root.get(), "hosts");
    std::set<std::string> seen;
    for (std::size_t i = 0; i < json_array_size(all); ++i) {
        const json_t* host = json_array_get(all, i);
        const json_t* mappings = json_object_get(host, "hostMappings");
        if (json_array_size(mappings) == 0) {
            seen.insert("no mappings");
        }
        if (json_is_true(json_object_get(host, "autoReissue"))) {
            const auto end = json_integer_value(json_object_get(host, "autoReissueDuration"));
            seen.insert(end == 0 ? "reissue without end" : "reissue with end");
        }
        for (std::size_t j = 0; j < json_array_size(mappings); ++j) {
            const json_t* mapping = json_array_get(mappings, j);
            for (const char* flag :
                 {"isApproved", "isConflicting", "isAddedManually", "isShared"}) {
                const json_t* value = json_object_get(mapping, flag);
                if (json_is_boolean(value)) {
                    seen.insert(std::string(flag) + (json_is_true(value) ? "=true" : "=false"));
                }
            }
            const std::size_t length =
                json_string_length(json_object_get(mapping, "mappedHostName"));
            if (length == 15 || length == 16 || length > 40) {
                seen.insert(std::to_string(length > 40 ? 40 : length) + " bytes");
            }
        }
    }
    for (const char* kind :
         {"no mappings", "reissue without end", "reissue with end", "isApproved=true",
          "isApproved=false", "isConflicting=true", "isConflicting=false", "isAddedManually=true",
          "isAddedManually=false", "isShared=true", "isShared=false", "15 bytes", "16 bytes",
          "40 bytes"}) {
        EXPECT_EQ(seen.count(kind), 1U) << kind;
    }
}

TEST_F(Listing, UnknownHostIsAnError) {
    for (const char* id : {"0a0aa0a0-0000-0aa0-aa00-000000000000", "testhost1", "..", "%2e"}) {
        const Received reply = client.get(hosts + '/' + id);
        EXPECT_EQ(reply.status, 404) << id;
        EXPECT_EQ(reply.errorCode(), 8701) << id;
    }
}

TEST_F(Listing, WrongRequestsAreRefused) {
    EXPECT_EQ(client.get("/arkeon/ping").errorCode(), 8710);
    EXPECT_EQ(client.get("/arkeon/ping").status, 404);
    const Received query = client.get(hosts + "/hostmappings?isapproved=maybe");
    EXPECT_EQ(query.status, 400);
    EXPECT_EQ(query.errorCode(), 8711);
    const Received method = client.send("DELETE", hosts + "/hostmappings");
    EXPECT_EQ(method.status, 405);
    EXPECT_EQ(method.errorCode(), 8708);
    EXPECT_EQ(method.headers.at("allow"), "GET");
    EXPECT_EQ(client.send("OPTIONS", hosts).status, 405);
    EXPECT_EQ(client.send("HEAD", hosts).status, 405);
    EXPECT_EQ(client.send("TRACE", hosts).status, 405);
    EXPECT_EQ(client.send("NONSENSE", hosts).status, 400);
    const Received type = client.send("GET", hosts, nullptr, {{"Accept", "application/json"}});
    EXPECT_EQ(type.status, 406);
    EXPECT_EQ(type.errorCode(), 8709);
    const Received version =
        client.send("GET", hosts, nullptr, {{"Accept", "application/vnd.arkeon+json;version=5.0"}});
    EXPECT_EQ(version.errorCode(), 8709);
}

TEST_F(Listing, CompressesWhenTheClientTakesIt) {
    const std::string plain = client.get(hosts + "/hostmappings").body;
    client.askForCompression();
    const Received reply = client.get(hosts + "/hostmappings");
    EXPECT_EQ(reply.headers.at("content-encoding"), "gzip");
    EXPECT_LT(std::stoul(reply.headers.at("content-length")), plain.size() / 2);
    EXPECT_EQ(reply.body, plain);
    EXPECT_EQ(client.get(hosts + '/' + testhost1).headers.at("content-encoding"), "gzip");
    EXPECT_EQ(client.get(hosts + "/unknown").errorCode(), 8701);
}

TEST_F(Listing, LongestTargetsAreNoTrouble) {
    std::string name;
    for (int i = 0; i < 1024; ++i) {
        name += "%0A";
    }
    EXPECT_EQ(client.get(hosts + "/hostmappings?mappedhostname=" + name).body, "{\"hosts\":[]}");
    EXPECT_EQ(client.get(hosts + '/' + testhost1 + "/hostmappings/" + name).status, 405);
    EXPECT_EQ(client.get(hosts + '/' + name + name).status, 404);
    EXPECT_EQ(client.get(hosts + '/' + std::string(10'000, 'a')).status, 414);
}

TEST_F(Listing, ABodyThatBelongsToNoRequestIsNotTakenForTheNextOne) {
    const Received odd = client.send("GET", hosts + '/' + testhost1, "GET /x HTTP/1.1\r\n\r\n");
    EXPECT_EQ(odd.status, 400);
    EXPECT_EQ(odd.errorCode(), 8711);
    const Received next = client.get(hosts + '/' + testhost2);
    EXPECT_EQ(next.status, 200);
    EXPECT_NE(next.body.find("testhost2"), std::string::npos);
}

TEST(GeneratedHosts, AreTheSameForTheSameNumber) {
    const LocalServer one({}, 500);
    const LocalServer other({}, 500);
    std::string first = Client(one.root(), one.address()).get(hosts).body;
    const std::string second = Client(other.root(), other.address()).get(hosts).body;
    for (std::size_t at = first.find(one.address()); at != std::string::npos;
         at = first.find(one.address())) {
        first.replace(at, one.address().size(), other.address());
    }
    EXPECT_EQ(first, second);
    EXPECT_EQ(occurrences(second, "\"uuid\""), 500U);
    EXPECT_EQ(occurrences(second, "\"mappedHostName\""), 1500U);
    EXPECT_EQ(occurrences(second, localHostId), 1U);
}

TEST(GeneratedHosts, ManyAreStreamed) {
    const LocalServer server({}, 5000);
    Client client(server.root(), server.address());
    const Received plain = client.get(hosts);
    EXPECT_EQ(plain.headers.at("transfer-encoding"), "chunked");
    EXPECT_EQ(occurrences(plain.body, "\"uuid\""), 5000U);
    EXPECT_TRUE(parse(plain.body));
    client.askForCompression();
    const Received compressed = client.get(hosts);
    EXPECT_EQ(compressed.headers.at("content-encoding"), "gzip");
    EXPECT_EQ(compressed.body, plain.body);
    EXPECT_EQ(
        inShort(client.get(hosts + "/hostmappings?mappedhostname=host004999-backup").body),
        "host004999: host004999, host004999.example.com, host004999-backup");
}

TEST(GeneratedHosts, NoneAreNone) {
    const LocalServer server({}, 0);
    EXPECT_EQ(Client(server.root(), server.address()).get(hosts).body, "{\"hosts\":[]}");
}

}  // namespace
