#include "devserver/Json.h"
#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace devserver;
using namespace devserver::testing;

class Changes : public ::testing::Test {
protected:
    LocalServer server;
    Client client{server.root(), server.address()};

    static std::string mapping(const std::string& hostId, const std::string& name) {
        return hosts + '/' + hostId + "/hostmappings/" + name;
    }
    std::string hostText(const std::string& hostId) {
        return client.get(hosts + '/' + hostId).body;
    }
    std::string listed(const std::string& query) {
        return inShort(client.get(hosts + "/hostmappings?" + query).body);
    }
    Received patch(const std::string& hostId, const std::string& body) {
        return client.send("PATCH", hosts + '/' + hostId, body.c_str());
    }
};

TEST_F(Changes, AddsAMapping) {
    const std::int64_t before = nowInMilliseconds();
    const Received reply = client.put(mapping(testhost1, "new"), R"({"isShared":false})");
    EXPECT_EQ(reply.status, 201);
    const JsonPtr record = parse(reply.body);
    EXPECT_EQ(textAt(record.get(), "mappedHostName"), "new");
    EXPECT_TRUE(json_is_true(json_object_get(record.get(), "isApproved")));
    EXPECT_TRUE(json_is_true(json_object_get(record.get(), "isAddedManually")));
    EXPECT_TRUE(json_is_false(json_object_get(record.get(), "isShared")));
    const auto created = json_integer_value(json_object_get(record.get(), "createdOn"));
    EXPECT_GE(created, before);
    EXPECT_LE(created, nowInMilliseconds());
    EXPECT_NE(
        listed("mappedhostname=new").find("testhost1.storage.example.com, new"), std::string::npos);
}

TEST_F(Changes, ApprovesAPendingMapping) {
    const Received reply =
        client.put(mapping(testhost1, "TESTHOST1.storage.example.com"), R"({"isShared":false})");
    EXPECT_EQ(reply.status, 200);
    const JsonPtr record = parse(reply.body);
    EXPECT_EQ(textAt(record.get(), "mappedHostName"), "testhost1.storage.example.com");
    EXPECT_TRUE(json_is_true(json_object_get(record.get(), "isApproved")));
    EXPECT_EQ(json_integer_value(json_object_get(record.get(), "createdOn")), 1770000000000);
    EXPECT_GT(json_integer_value(json_object_get(record.get(), "updatedOn")), 1770000000000);
    EXPECT_EQ(listed("isapproved=false").find("storage"), std::string::npos);
}

TEST_F(Changes, AMappingCompletesARecordWithMissingKeys) {
    const std::string bare = "b5b5b5b5-bbbb-4bb5-9bbb-b5b5b5b5b5b5";
    EXPECT_EQ(client.put(mapping(bare, "barehost-discovered"), R"({"isShared":true})").status, 200);
    EXPECT_NE(hostText(bare).find("\"isShared\":true"), std::string::npos);
}

TEST_F(Changes, ANameOfAnotherHostMustBeSharedByBoth) {
    for (const char* body : {R"({"isShared":false})", R"({"isShared":true})"}) {
        const Received reply = client.put(mapping(testhost2, "testhost1"), body);
        EXPECT_EQ(reply.status, 409);
        EXPECT_EQ(reply.errorCode(), 8702);
    }
    EXPECT_EQ(listed("mappedhostname=testhost1").find("testhost2"), std::string::npos);
    EXPECT_EQ(client.put(mapping(testhost1, "testhost1"), R"({"isShared":true})").status, 200);
    EXPECT_EQ(client.put(mapping(testhost2, "testhost1"), R"({"isShared":false})").status, 409);
    EXPECT_EQ(client.put(mapping(testhost2, "Testhost1"), R"({"isShared":true})").status, 201);
    EXPECT_EQ(client.put(mapping(testhost1, "testhost1"), R"({"isShared":false})").status, 409);
}

TEST_F(Changes, ConflictsComeAndGoWithTheApprovedName) {
    EXPECT_EQ(listed("isconflict=true"), "impostor.example.com: testhost1");
    EXPECT_EQ(client.send("DELETE", mapping(testhost1, "testhost1")).status, 204);
    EXPECT_EQ(listed("isconflict=true"), "");
    EXPECT_EQ(client.put(mapping(testhost2, "testhost1"), R"({"isShared":false})").status, 201);
    EXPECT_EQ(listed("isconflict=true"), "impostor.example.com: testhost1");
    EXPECT_EQ(client.put(mapping(testhost2, "testhost1"), R"({"isShared":true})").status, 200);
    EXPECT_EQ(listed("isconflict=true"), "");
}

TEST_F(Changes, RemovesAMapping) {
    const Received reply = client.send("DELETE", mapping(testhost1, "TESTHOST1-alias"));
    EXPECT_EQ(reply.status, 204);
    EXPECT_EQ(reply.body, "");
    EXPECT_EQ(listed("mappedhostname=testhost1-alias"), "");
    const Received again = client.send("DELETE", mapping(testhost1, "testhost1-alias"));
    EXPECT_EQ(again.status, 404);
    EXPECT_EQ(again.errorCode(), 8701);
    EXPECT_EQ(client.send("DELETE", mapping("unknown", "x")).errorCode(), 8701);
    EXPECT_EQ(client.put(mapping("unknown", "x"), R"({"isShared":true})").errorCode(), 8701);
}

TEST_F(Changes, ADeletionWithABodyIsRefused) {
    for (const Headers& headers : {Headers{}, Headers{{"Transfer-Encoding", "chunked"}}}) {
        const Received reply =
            client.send("DELETE", mapping(testhost1, "testhost1-alias"), "x", headers);
        EXPECT_EQ(reply.status, 400);
        EXPECT_EQ(reply.errorCode(), 8711);
    }
    EXPECT_NE(listed("mappedhostname=testhost1-alias"), "");
    const Headers empty{{"Content-Length", "0"}};
    EXPECT_EQ(
        client.send("DELETE", mapping(testhost1, "testhost1-alias"), nullptr, empty).status, 204);
}

TEST_F(Changes, DotSegmentsAndSlashesAreNamesLikeOthers) {
    for (const char* name : {"..", ".", "a%2Fb", "%2E%2e%2F..", "a%3Fb%23c", "with%20blank"}) {
        EXPECT_EQ(client.send("DELETE", mapping(testhost2, name)).errorCode(), 8701) << name;
        EXPECT_EQ(client.put(mapping(testhost2, name), R"({"isShared":false})").status, 201)
            << name;
        EXPECT_EQ(client.send("DELETE", mapping(testhost2, name)).status, 204) << name;
    }
    EXPECT_EQ(listed("mappedhostname=testhost2"), "testhost2: testhost2");
}

TEST_F(Changes, NamesHaveLimits) {
    const std::string body = R"({"isShared":false})";
    EXPECT_EQ(client.put(mapping(testhost2, std::string(1024, 'n')), body).status, 201);
    const Received tooLong = client.put(mapping(testhost2, std::string(1025, 'n')), body);
    EXPECT_EQ(tooLong.status, 400);
    EXPECT_EQ(tooLong.errorCode(), 8706);
    for (const char* name : {"%00", "a%0Ab", "%FF", "%C2%9B"}) {
        EXPECT_EQ(client.put(mapping(testhost2, name), body).errorCode(), 8706) << name;
    }
    EXPECT_EQ(client.put(mapping(testhost2, ""), body).status, 404);
    const auto named = [](std::size_t length) {
        return R"({"hostName":")" + std::string(length, 'h') + R"("})";
    };
    EXPECT_EQ(client.send("POST", hosts + '/', named(1024).c_str()).status, 201);
    EXPECT_EQ(client.send("POST", hosts + '/', named(1025).c_str()).errorCode(), 8706);
    EXPECT_EQ(client.send("POST", hosts + '/', named(0).c_str()).errorCode(), 8706);
    EXPECT_EQ(patch(testhost2, named(1025)).errorCode(), 8706);
}

TEST_F(Changes, SetsAndClearsAComment) {
    const std::string comment = hosts + '/' + testhost2 + "/comment";
    const Received reply = client.put(comment, "{\"comment\":\"Z\xc3\xbcrich\\n\\\"x\\\"\"}");
    EXPECT_EQ(reply.status, 200);
    const JsonPtr host = parse(hostText(testhost2));
    EXPECT_EQ(textAt(host.get(), "comment"), "Z\xc3\xbcrich\n\"x\"");
    EXPECT_EQ(client.put(comment, R"({"comment":""})").status, 200);
    EXPECT_NE(hostText(testhost2).find("\"comment\":null"), std::string::npos);
    EXPECT_EQ(client.put(hosts + "/unknown/comment", R"({"comment":"x"})").errorCode(), 8701);
}

TEST_F(Changes, CommentsHaveALimit) {
    const std::string comment = hosts + '/' + testhost2 + "/comment";
    const auto body = [](std::size_t length) {
        return R"({"comment":")" + std::string(length, 'c') + R"("})";
    };
    EXPECT_EQ(client.put(comment, body(2048)).status, 200);
    const Received reply = client.put(comment, body(2049));
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(reply.errorCode(), 8706);
    EXPECT_NE(hostText(testhost2).find(std::string(2048, 'c')), std::string::npos);
}

TEST_F(Changes, AllowsAndForbidsReissue) {
    constexpr std::int64_t twoDays = std::int64_t{48} * 3600 * 1000;
    const std::int64_t before = nowInMilliseconds();
    EXPECT_EQ(patch(testhost1, R"({"autoReissue":true})").status, 204);
    const JsonPtr allowed = parse(hostText(testhost1));
    EXPECT_TRUE(json_is_true(json_object_get(allowed.get(), "autoReissue")));
    const auto end = json_integer_value(json_object_get(allowed.get(), "autoReissueDuration"));
    EXPECT_GE(end, before + twoDays);
    EXPECT_LE(end, nowInMilliseconds() + twoDays);
    EXPECT_EQ(patch(testhost1, R"({"autoReissue":false})").status, 204);
    const std::string forbidden = hostText(testhost1);
    EXPECT_NE(forbidden.find("\"autoReissue\":false"), std::string::npos);
    EXPECT_NE(forbidden.find("\"autoReissueDuration\":0"), std::string::npos);
    EXPECT_EQ(patch("unknown", R"({"autoReissue":false})").errorCode(), 8701);
}

TEST_F(Changes, RenamesAHost) {
    EXPECT_EQ(patch(testhost1, R"({"hostName":"renamed"})").status, 204);
    EXPECT_NE(hostText(testhost1).find("\"hostName\":\"renamed\""), std::string::npos);
    EXPECT_EQ(patch(testhost1, R"({"hostName":"Renamed"})").status, 204);
    const Received taken = patch(testhost2, R"({"hostName":"RENAMED"})");
    EXPECT_EQ(taken.status, 409);
    EXPECT_EQ(taken.errorCode(), 8703);
    EXPECT_EQ(patch(testhost2, R"({"hostName":"t2","autoReissue":false})").status, 204);
}

TEST_F(Changes, AddsAHost) {
    const Received reply = client.send("POST", hosts + '/', R"({"hostName":"fresh"})");
    EXPECT_EQ(reply.status, 201);
    const JsonPtr host = parse(reply.body);
    EXPECT_EQ(reply.headers.at("location"), hosts + '/' + textAt(host.get(), "uuid"));
    EXPECT_EQ(hostText(textAt(host.get(), "uuid")), reply.body);
    EXPECT_EQ(listed("mappedhostname=fresh"), "fresh: fresh");
    const Received again = client.send("POST", hosts, R"({"hostName":"FRESH"})");
    EXPECT_EQ(again.status, 409);
    EXPECT_EQ(again.errorCode(), 8703);
    EXPECT_EQ(client.send("POST", hosts, R"({"hostName":"testhost1-alias"})").errorCode(), 8702);
}

TEST_F(Changes, BodiesOfTheWrongFormAreRefused) {
    const std::string name = mapping(testhost1, "x");
    for (const char* body :
         {"", "{}", "[]", "null", "{", R"({"isShared":1})", R"({"isShared":"true"})",
          R"({"isShared":true,"more":1})", R"({"isshared":true})",
          R"({"isShared":true,"isShared":true})", R"({"isShared":true}x)"}) {
        const Received reply = client.put(name, body);
        EXPECT_EQ(reply.status, 400) << body;
        EXPECT_EQ(reply.errorCode(), 8705) << body;
    }
    for (const char* body :
         {"{}", R"({"autoReissue":1})", R"({"hostName":null})", R"({"comment":"x"})",
          R"({"hostName":"x","other":1})"}) {
        EXPECT_EQ(patch(testhost1, body).errorCode(), 8705) << body;
    }
    EXPECT_EQ(client.send("PUT", name).errorCode(), 8705);
    EXPECT_EQ(
        client.put(hosts + '/' + testhost1 + "/comment", "{\"comment\":\"\xff\"}").errorCode(),
        8705);
    EXPECT_EQ(listed("mappedhostname=x"), "");
}

TEST_F(Changes, OtherMediaTypesAreRefused) {
    const std::string name = mapping(testhost1, "x");
    const char* body = R"({"isShared":true})";
    for (const char* type :
         {"", "application/json", "text/plain", "application/vnd.arkeon+json;version=7.0",
          "multipart/form-data; boundary=x", "application/x-www-form-urlencoded"}) {
        const Received reply = client.send("PUT", name, body, {{"Content-Type", type}});
        EXPECT_EQ(reply.status, 406) << type;
        EXPECT_EQ(reply.errorCode(), 8709) << type;
    }
    EXPECT_EQ(client.send("PUT", name, body, {{"Accept", "text/html"}}).status, 406);
    EXPECT_EQ(listed("mappedhostname=x"), "");
}

TEST_F(Changes, BodiesHaveALimit) {
    const std::string name = mapping(testhost1, "x");
    const std::string most = R"({"isShared":true)" + std::string(64 * 1024 - 17, ' ') + '}';
    EXPECT_EQ(most.size(), 64U * 1024);
    EXPECT_EQ(client.put(name, most).status, 201);
    for (const Headers& headers : {Headers{}, Headers{{"Transfer-Encoding", "chunked"}}}) {
        const Received reply = client.send("PUT", name, (most + ' ').c_str(), headers);
        EXPECT_EQ(reply.status, 413);
        EXPECT_EQ(reply.errorCode(), 8707);
    }
    EXPECT_EQ(client.get(hosts + '/' + testhost1).status, 200);
    client.put(name, std::string(4'000'000, ' '));
    EXPECT_EQ(client.get(hosts + '/' + testhost1).status, 200);
}

TEST_F(Changes, ChunkedBodiesAreTaken) {
    const Received reply = client.send(
        "PUT", mapping(testhost1, "x"), R"({"isShared":true})", {{"Transfer-Encoding", "chunked"}});
    EXPECT_EQ(reply.status, 201);
}

TEST_F(Changes, ReasonsHaveALimit) {
    const auto deleteWith = [this](const std::string& reason) {
        return client.send(
            "DELETE", mapping(testhost1, "none"), nullptr, {{"X-Arkeon-Audit-Reason", reason}});
    };
    const auto encoded = [](std::size_t length) {
        std::string reason;
        for (std::size_t i = 0; i < length; ++i) {
            reason += "%25";
        }
        return reason;
    };
    EXPECT_EQ(deleteWith(std::string(512, 'r')).errorCode(), 8701);
    EXPECT_EQ(deleteWith(std::string(513, 'r')).errorCode(), 8706);
    EXPECT_EQ(deleteWith(encoded(512)).errorCode(), 8701);
    EXPECT_EQ(deleteWith(encoded(513)).errorCode(), 8706);
}

TEST_F(Changes, ReasonsAreDecodedOnce) {
    const std::vector<std::pair<std::string, std::string>> reasons{
        {"100%25%20sure", "100% sure"}, {"%2541", "%41"}, {"a%2Bb+c", "a+b+c"}, {"%zz", "%zz"}};
    for (const auto& [sent, reason] : reasons) {
        EXPECT_EQ(
            client
                .send(
                    "DELETE", mapping(testhost1, "none"), nullptr,
                    {{"X-Arkeon-Audit-Reason", sent}})
                .errorCode(),
            8701);
        EXPECT_EQ(server.audit().back().reason, reason);
    }
}

TEST_F(Changes, EveryChangeAndEveryRefusalIsAudited) {
    const std::string name = mapping(testhost1, "new%2Fone");
    client.get(hosts);
    client.send(
        "PUT", name, R"({"isShared":true})", {{"X-Arkeon-Audit-Reason", "move%20to%20B%C3%BCro"}});
    client.send("DELETE", mapping(testhost1, "none"));
    client.use("wrong");
    client.put(hosts + '/' + testhost1 + "/comment", R"({"comment":"x"})");
    const std::vector<AuditEntry> trail = server.audit();
    ASSERT_EQ(trail.size(), 3U);
    EXPECT_EQ(trail[0].who, "admin");
    EXPECT_EQ(trail[0].method, "PUT");
    EXPECT_EQ(trail[0].resource, name);
    EXPECT_EQ(trail[0].reason, "move to B\xc3\xbcro");
    EXPECT_EQ(trail[0].status, 201);
    EXPECT_EQ(trail[0].errorCode, 0);
    EXPECT_LE(nowInMilliseconds() - trail[0].time, 60'000);
    EXPECT_EQ(trail[1].method, "DELETE");
    EXPECT_EQ(trail[1].reason, "");
    EXPECT_EQ(trail[1].status, 404);
    EXPECT_EQ(trail[1].errorCode, 8701);
    EXPECT_EQ(trail[2].who, localHostId);
    EXPECT_EQ(trail[2].status, 401);
    EXPECT_EQ(trail[2].errorCode, 117);
}

TEST_F(Changes, AMethodThatNoResourceKnowsIsAudited) {
    for (const char* method : {"TRACE", "OPTIONS"}) {
        EXPECT_EQ(client.send(method, hosts).status, 405);
        const std::vector<AuditEntry> trail = server.audit();
        ASSERT_FALSE(trail.empty()) << method;
        const AuditEntry& entry = trail.back();
        EXPECT_EQ(entry.method, method);
        EXPECT_EQ(entry.resource, hosts);
        EXPECT_EQ(entry.status, 405);
        EXPECT_EQ(entry.errorCode, 8708);
    }
    EXPECT_EQ(server.audit().size(), 2U);
}

TEST_F(Changes, EveryRequestOfAConnectionIsItsOwn) {
    for (int i = 0; i < 50; ++i) {
        const std::string name = "n" + std::to_string(i);
        EXPECT_EQ(client.put(mapping(testhost2, name), R"({"isShared":false})").status, 201);
        EXPECT_EQ(client.send("DELETE", mapping(testhost2, name)).status, 204);
    }
    EXPECT_EQ(server.audit().size(), 100U);
}

}  // namespace
