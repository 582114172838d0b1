#include "devserver/Json.h"
#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <curl/curl.h>

#include <chrono>
#include <thread>

namespace {

using namespace devserver;
using namespace devserver::testing;

/// A server with the rules, and what one GET of a host gives under them.
struct Faulty {
    LocalServer server;
    Client client;

    explicit Faulty(const std::vector<std::string>& rules)
        : server(rules), client(server.root(), server.address()) {}

    Received get() { return client.get(hosts + '/' + testhost1); }
};

TEST(Fault, StatusWithErrorCodeForTheNextRequests) {
    Faulty faulty({"GET * x2 status=503/8888"});
    for (int i = 0; i < 2; ++i) {
        const Received reply = faulty.get();
        EXPECT_EQ(reply.status, 503);
        EXPECT_EQ(reply.errorCode(), 8888);
    }
    EXPECT_EQ(faulty.get().status, 200);
}

TEST(Fault, StatusWithoutAReadableBody) {
    Faulty faulty({"GET * status=500", "GET * status=204"});
    const Received reply = faulty.get();
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.body, "");
    EXPECT_EQ(faulty.get().status, 204);
    EXPECT_EQ(faulty.get().status, 200);
}

TEST(Fault, ErrorCodesMayBeHuge) {
    Faulty faulty({"GET * status=400/4294967297"});
    EXPECT_EQ(faulty.get().errorCode(), 4294967297);
}

TEST(Fault, AReplacedChangeChangesNothingAndIsAudited) {
    Faulty faulty({"PUT " + hosts + "/* status=500/8999"});
    const std::string comment = hosts + '/' + testhost1 + "/comment";
    EXPECT_EQ(faulty.client.put(comment, R"({"comment":"new"})").errorCode(), 8999);
    EXPECT_EQ(faulty.get().body.find("\"comment\":\"new\""), std::string::npos);
    const std::vector<AuditEntry> trail = faulty.server.audit();
    ASSERT_EQ(trail.size(), 1U);
    EXPECT_EQ(trail[0].who, "admin");
    EXPECT_EQ(trail[0].status, 500);
    EXPECT_EQ(trail[0].errorCode, 8999);
}

TEST(Fault, Delay) {
    Faulty faulty({"GET * delay=2000"});
    EXPECT_GE(faulty.get().seconds, 2.0);
    EXPECT_LT(faulty.get().seconds, 2.0);
}

TEST(Fault, DelayedPastTheClientsPatience) {
    Faulty faulty({"GET * delay=3000"});
    faulty.client.limitTime(100);
    EXPECT_EQ(faulty.get().curl, CURLE_OPERATION_TIMEDOUT);
}

TEST(Fault, Drip) {
    Faulty faulty({"GET * drip=300/20"});
    const Received slow = faulty.get();
    EXPECT_GE(slow.seconds, 0.05);
    EXPECT_EQ(slow.curl, 0);
    EXPECT_EQ(slow.body, faulty.get().body);
}

TEST(Fault, CutInTheBody) {
    Faulty faulty({"GET * cut=100", "GET * cut=0"});
    const Received cut = faulty.get();
    EXPECT_EQ(cut.body.size(), 100U);
    EXPECT_NE(cut.curl, 0);
    const Received head = faulty.get();
    EXPECT_EQ(head.body, "");
    EXPECT_NE(head.curl, 0);
    EXPECT_EQ(faulty.get().curl, 0);
}

TEST(Fault, CutAppliesToListingsAndCompressedBodies) {
    Faulty faulty({"GET * cut=100", "GET * cut=100"});
    EXPECT_EQ(faulty.client.get(hosts).body.size(), 100U);
    faulty.client.askForCompression();
    EXPECT_NE(faulty.client.get(hosts).curl, 0);
    EXPECT_EQ(faulty.client.get(hosts).curl, 0);
}

TEST(Fault, WrongContentLength) {
    Faulty faulty({"GET * length=+10", "GET * length=-10"});
    const Received tooLong = faulty.get();
    const Received tooShort = faulty.get();
    // The surplus bytes spoil the connection for the client.
    Client fresh(faulty.server.root(), faulty.server.address());
    const Received right = fresh.get(hosts + '/' + testhost1);
    EXPECT_EQ(right.curl, 0);
    EXPECT_NE(tooLong.curl, 0);
    EXPECT_EQ(tooLong.body, right.body);
    EXPECT_EQ(std::stoul(tooLong.headers.at("content-length")), right.body.size() + 10);
    EXPECT_EQ(tooShort.body, right.body.substr(0, right.body.size() - 10));
}

TEST(Fault, HtmlInsteadOfJson) {
    Faulty faulty({"GET * html", "GET * html,status=502"});
    const Received page = faulty.get();
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.headers.at("content-type"), "text/html; charset=utf-8");
    EXPECT_FALSE(parse(page.body));
    EXPECT_EQ(faulty.get().status, 502);
}

TEST(Fault, Redirect) {
    Faulty faulty({"GET * redirect=https://127.0.0.1:1/else", "GET * redirect=/x,status=308"});
    const Received reply = faulty.get();
    EXPECT_EQ(reply.status, 302);
    EXPECT_EQ(reply.headers.at("location"), "https://127.0.0.1:1/else");
    EXPECT_EQ(faulty.get().status, 308);
}

TEST(Fault, EndlessBody) {
    Faulty faulty({"GET * endless"});
    faulty.client.limitSize(3'000'000);
    const Received reply = faulty.get();
    EXPECT_EQ(reply.curl, CURLE_WRITE_ERROR);
    EXPECT_EQ(reply.status, 200);
    EXPECT_GT(reply.body.size(), 3'000'000U);
    EXPECT_EQ(reply.body.substr(0, 14), "{\"hosts\":[{},{");
}

TEST(Fault, DropClosesWithoutAReply) {
    Faulty faulty({"DELETE * drop"});
    const Received reply = faulty.client.send("DELETE", hosts + '/' + testhost1);
    EXPECT_NE(reply.curl, 0);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(faulty.get().status, 200);
}

TEST(Fault, HostileTexts) {
    Faulty faulty(
        {"GET * hostile", "GET * hostile=utf8", "GET * hostile=controls", "GET * hostile=format"});
    const JsonPtr escapes = parse(faulty.get().body);
    EXPECT_NE(textAt(escapes.get(), "comment").find("\x1b[31m"), std::string::npos);
    const json_t* mapping = json_array_get(json_object_get(escapes.get(), "hostMappings"), 0);
    EXPECT_NE(textAt(mapping, "mappedHostName").find("\x1b]0;"), std::string::npos);
    const Received bytes = faulty.client.get(hosts);
    EXPECT_FALSE(parse(bytes.body));
    EXPECT_NE(bytes.body.find("\xff\xfe"), std::string::npos);
    const JsonPtr controls = parse(faulty.get().body);
    EXPECT_NE(textAt(controls.get(), "comment").find("\nb\tc\r"), std::string::npos);
    EXPECT_NE(faulty.get().body.find("%s%n"), std::string::npos);
    EXPECT_EQ(faulty.get().body.find("%s%n"), std::string::npos);
}

TEST(Fault, CertificatesForTheNextConnections) {
    LocalServer server({"CONNECT x2 expired", "CONNECT wrong-name", "CONNECT untrusted"});
    for (int i = 0; i < 4; ++i) {
        Client client(server.root(), server.address());
        const Received reply = client.get(hosts);
        EXPECT_EQ(reply.curl, CURLE_PEER_FAILED_VERIFICATION) << i;
        EXPECT_EQ(reply.status, 0);
    }
    EXPECT_EQ(Client(server.root(), server.address()).get(hosts).status, 200);
}

TEST(Fault, ARequestInTheMiddleIsAnsweredWhenTheServerStops) {
    Faulty faulty({"PUT * delay=60000"});
    std::thread asking([&faulty] {
        const Received reply =
            faulty.client.put(hosts + '/' + testhost1 + "/comment", R"({"comment":"in time"})");
        EXPECT_EQ(reply.status, 200);
        EXPECT_NE(reply.body.find("in time"), std::string::npos);
    });
    // A slow machine needs longer until the request is there.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    faulty.server.stop();
    asking.join();
    EXPECT_EQ(faulty.server.audit().size(), 1U);
}

TEST(Fault, WaitsEndWhenTheServerStops) {
    Faulty faulty({"GET * delay=60000", "GET * drip=1/60000", "GET * endless"});
    std::vector<std::thread> waiting;
    for (int i = 0; i < 3; ++i) {
        waiting.emplace_back(
            [&faulty] { Client(faulty.server.root(), faulty.server.address()).get(hosts); });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const auto start = std::chrono::steady_clock::now();
    faulty.server.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    for (std::thread& thread : waiting) {
        thread.join();
    }
}

}  // namespace
