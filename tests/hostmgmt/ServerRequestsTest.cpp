#include "cmdframework/Messages.h"
#include "support/Environment.h"
#include "support/FakeClient.h"
#include "support/StatusLines.h"
#include "support/Streams.h"
#include "support/TempDir.h"
#include "support/TestOperation.h"

#include <gtest/gtest.h>

namespace {

using support::FakeClient;
using support::FakeRequest;
using Lines = std::vector<std::string>;

constexpr const char* accept = "Accept: application/vnd.arkeon+json;version=6.0";

/// One request and all that it left behind.
struct Outcome {
    int result = -1;
    int httpCode = 0;
    std::string response;
    Printed printed;
};

Outcome send(
    TestOperation& test, CurlRequestType method, OperationType operation = OP_ADD_MAPPING,
    LoginType login = USER_LOGIN) {
    Outcome outcome;
    outcome.printed = printedBy([&] {
        outcome.result = test.operation.sendRequest(
            operation, method, R"({"b":1})", "na me", "ID", outcome.response, outcome.httpCode,
            login);
    });
    return outcome;
}

Outcome sendTo(const support::FakeReply& reply, CurlRequestType method) {
    FakeClient client({reply});
    TestOperation test;
    return send(test, method);
}

TEST(ServerRequests, TheRequestCarriesServerPortAndHeaders) {
    FakeClient client({{0, 200, "{}"}});
    TestOperation test({"-server", "primary", "-r", "be cause"});
    EXPECT_EQ(send(test, CURL_PUT).result, 0);
    const FakeRequest& request = client.requests.at(0);
    EXPECT_EQ(request.method, "PUT");
    EXPECT_EQ(request.server, "primary");
    EXPECT_EQ(request.port, 1556);
    EXPECT_EQ(request.certType, 1);
    EXPECT_TRUE(request.withToken);
    EXPECT_EQ(request.uri, "arkeon/config/hosts/ID/hostmappings/na%20me");
    EXPECT_EQ(request.body, R"({"b":1})");
    EXPECT_EQ(request.headers, (Lines{accept, "X-Arkeon-Audit-Reason: be%20cause"}));
    EXPECT_TRUE(TestOperation::logged("2 Master server is: primary"));
    EXPECT_TRUE(TestOperation::logged("2 Encoded reason: be%20cause"));
}

TEST(ServerRequests, HostIdAndNameStandInDifferentOrdersInTheTwoFunctions) {
    FakeClient client({{0, 200, "a"}, {0, 200, "b"}});
    TestOperation test;
    std::string response;
    int httpCode = 0;
    EXPECT_EQ(
        test.operation.sendRequest(
            OP_DELETE_MAPPING, CURL_DELETE, "", "name", "hostid", response, httpCode, USER_LOGIN),
        0);
    EXPECT_EQ(
        test.operation.curlSendRequest(
            OP_DELETE_MAPPING, "hostid", "name", CURL_DELETE, "", response, httpCode, USER_LOGIN),
        0);
    EXPECT_EQ(client.requests.at(0).uri, "arkeon/config/hosts/hostid/hostmappings/name");
    EXPECT_EQ(client.requests.at(1).uri, client.requests.at(0).uri);
    EXPECT_EQ(response, "b");
}

TEST(ServerRequests, AnEmptyAuditReasonStillSendsTheHeaderOnEveryMethodButGet) {
    for (const CurlRequestType method : {CURL_PUT, CURL_DELETE, CURL_PATCH, CURL_POST}) {
        FakeClient client({{0, 200, "{}"}});
        TestOperation test;
        send(test, method);
        EXPECT_EQ(client.requests.at(0).headers, (Lines{accept, "X-Arkeon-Audit-Reason: "}));
    }
    FakeClient client({{0, 200, "{}"}});
    TestOperation test({"-server", "primary", "-reason", "why"});
    send(test, CURL_GET);
    EXPECT_EQ(client.requests.at(0).headers, Lines{accept});
}

TEST(ServerRequests, MethodsAreSentAsTheyAreNumbered) {
    const std::pair<int, const char*> methods[] = {
        {0, "GET"}, {1, "PUT"}, {2, "DELETE"}, {3, "PATCH"}, {4, "POST"}};
    for (const auto& [number, name] : methods) {
        FakeClient client({{0, 200, "{}"}});
        TestOperation test;
        send(test, static_cast<CurlRequestType>(number));
        EXPECT_EQ(client.requests.at(0).method, name);
        const bool hasBody = number != 0 && number != 2;
        EXPECT_EQ(client.requests.at(0).body, hasBody ? R"({"b":1})" : "");
    }
}

TEST(ServerRequests, TheHostCertificateNeedsNoToken) {
    FakeClient client({{0, 200, "{}"}});
    TestOperation test;
    send(test, CURL_GET, OP_HOST_APPROVED, HOST_CERTIFICATE);
    EXPECT_FALSE(client.requests.at(0).withToken);
}

TEST(ServerRequests, TheActiveNodeOfAClusterUsesTheClustersCertificate) {
    const support::TempDir root;
    root.write(
        "etc/master.toml", "[primary_server]\nname = \"p\"\n[cluster]\nactive_node = true\n");
    const support::ScopedVariable variable("ARKEON_ROOT", root.path().string());
    FakeClient client({{0, 200, "{}"}});
    TestOperation test;
    send(test, CURL_GET);
    EXPECT_EQ(client.requests.at(0).certType, 2);
}

TEST(ServerRequests, WhichStatusesSucceed) {
    struct Row {
        int status;
        bool get, put, del, patch, post;
    };
    constexpr Row rows[] = {
        {200, true, true, true, true, true},      {201, true, true, true, true, true},
        {204, false, false, true, true, false},   {202, false, false, false, false, false},
        {302, false, false, false, false, false}, {404, false, false, false, false, false},
        {500, false, false, false, false, false},
    };
    for (const Row& row : rows) {
        const support::FakeReply reply{0, row.status, ""};
        EXPECT_EQ(sendTo(reply, CURL_GET).result, row.get ? 0 : 7610) << row.status;
        EXPECT_EQ(sendTo(reply, CURL_PUT).result, row.put ? 0 : 7610) << row.status;
        EXPECT_EQ(sendTo(reply, CURL_DELETE).result, row.del ? 0 : 7610) << row.status;
        EXPECT_EQ(sendTo(reply, CURL_PATCH).result, row.patch ? 0 : 7610) << row.status;
        EXPECT_EQ(sendTo(reply, CURL_POST).result, row.post ? 0 : 7610) << row.status;
    }
}

TEST(ServerRequests, SuccessPrintsNothingAndIsLogged) {
    const Outcome outcome = sendTo({0, 201, "body"}, CURL_PUT);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.httpCode, 201);
    EXPECT_EQ(outcome.response, "body");
    EXPECT_EQ(outcome.printed.out + outcome.printed.err, "");
    EXPECT_TRUE(TestOperation::logged("2 Curl request is successful."));
    EXPECT_EQ(LogLines::lines().back(), "2 Http return code : 201, Response string : body");
}

TEST(ServerRequests, ARequestIsLoggedStepByStep) {
    FakeClient client({{0, 404, R"({"errorCode":5,"errorMessage":"m"})"}});
    TestOperation test({"-server", "primary", "-r", "why"});
    send(test, CURL_DELETE);
    EXPECT_EQ(
        LogLines::lines(),
        (Lines{
            "2 Master server is: primary",
            "2 serverUri is: arkeon/config/hosts/ID/hostmappings/na%20me",
            "2 Encoded reason: why",
            "16 Error code returned by server is :5\n",
            "16 Error message returned by server is :m\n",
            std::string("16 ") + getECMessage(5),
            "16 API Response Error Code: 5",
            "16 URI Return Code: 404",
            R"(2 Http return code : 404, Response string : {"errorCode":5,"errorMessage":"m"})",
        }));
}

TEST(ServerRequests, TheLoginIsAskedForTwiceFor117And118AndOnceFor5930) {
    const std::pair<int, std::string> rows[] = {
        {117, webLogin + "\n" + webLogin + "\n" + lineOf(117)},
        {118, webLogin + "\n" + webLogin + "\n" + lineOf(118)},
        {5930, webLogin + "\n" + lineOf(5930)},
    };
    for (const auto& [status, text] : rows) {
        const Outcome outcome = sendTo({status, 0, ""}, CURL_GET);
        EXPECT_EQ(outcome.result, status);
        EXPECT_EQ(outcome.printed.err, text);
        EXPECT_EQ(LogLines::lines().back(), std::string("16 ") + getECMessage(status))
            << "no final log line";
    }
}

TEST(ServerRequests, ATransportFailureLeavesResponseAndCodeUntouched) {
    FakeClient client({{7621, 0, ""}});
    TestOperation test;
    std::string response = "before";
    int httpCode = 77;
    const Printed printed = printedBy([&] {
        EXPECT_EQ(
            test.operation.sendRequest(
                OP_HOST_ID, CURL_GET, "", "", "ID", response, httpCode, USER_LOGIN),
            7621);
    });
    EXPECT_EQ(response, "before");
    EXPECT_EQ(httpCode, 77);
    EXPECT_EQ(printed.err, lineOf(7621));
    EXPECT_TRUE(TestOperation::logged(
        "16 Failed to perform curl request for URI :arkeon/config/hosts/ID retval :7621"));
    EXPECT_EQ(LogLines::lines().back(), "2 Http return code : 0, Response string : ");
}

TEST(ServerRequests, AnEarlierHttpStatusDoesNotMakeAFailureASuccess) {
    FakeClient client({{7625, 0, ""}});
    TestOperation test;
    std::string response;
    int httpCode = 200;
    const Printed printed = printedBy([&] {
        EXPECT_EQ(
            test.operation.sendRequest(
                OP_HOST, CURL_PATCH, "{}", "", "ID", response, httpCode, USER_LOGIN),
            7625);
    });
    EXPECT_EQ(printed.err, lineOf(7625));
}

TEST(ServerRequests, AServersErrorCodeIsShownAndReturned) {
    const std::string body = R"({"errorCode":9876,"errorMessage":"m"})";
    const Outcome outcome = sendTo({0, 409, body}, CURL_PUT);
    EXPECT_EQ(outcome.result, 9876);
    EXPECT_EQ(outcome.printed.err, lineOf(9876));
    EXPECT_TRUE(TestOperation::logged("16 API Response Error Code: 9876"));
    EXPECT_TRUE(TestOperation::logged("16 URI Return Code: 409"));
    EXPECT_EQ(LogLines::lines().back(), "2 Http return code : 409, Response string : " + body);
}

TEST(ServerRequests, AnErrorReplyIsTakenAsItStandsCodeZeroIncluded) {
    const Outcome outcome = sendTo({0, 500, R"({"errorCode":0,"errorMessage":"m"})"}, CURL_PUT);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.printed.err, "");
    EXPECT_FALSE(TestOperation::logged("16 API Response Error Code: 0"));
}

TEST(ServerRequests, A204ToAPutReportsTheMissingCode) {
    const Outcome outcome = sendTo({0, 204, ""}, CURL_PUT);
    EXPECT_EQ(outcome.result, 7610);
    EXPECT_EQ(outcome.printed.err, lineOf(7610));
}

TEST(ServerRequests, DeletingAnUnknownMappingIs8901) {
    const std::string body = R"({"errorCode":8701,"errorMessage":"m"})";
    const Outcome outcome = sendTo({0, 404, body}, CURL_DELETE);
    EXPECT_EQ(outcome.result, 8901);
    EXPECT_EQ(
        outcome.printed.err,
        "Exit Status 8901: The mapping name that was provided does not exist.\n");
    EXPECT_EQ(LogLines::lines().back(), "16 The mapping name that was provided does not exist.");
    EXPECT_EQ(sendTo({0, 404, body}, CURL_PATCH).result, 8701) << "for a DELETE only";
}

TEST(ServerRequests, AServersOwn8901ToADeleteIsAnErrorLikeAnyOther) {
    const Outcome outcome =
        sendTo({0, 404, R"({"errorCode":8901,"errorMessage":"m"})"}, CURL_DELETE);
    EXPECT_EQ(outcome.result, 8901);
    EXPECT_EQ(LogLines::lines().back().substr(0, 25), "2 Http return code : 404,");
}

TEST(ServerRequests, ANameThatCannotBeEncodedSendsNothing) {
    FakeClient client;
    client.unencodable = "na me";
    client.encoderStatus = 7629;
    TestOperation test;
    const Outcome outcome = send(test, CURL_PUT);
    EXPECT_EQ(outcome.result, 7629);
    EXPECT_EQ(
        outcome.printed.err, "Unable to encode hostname : na me, error : 7629\n" + lineOf(7629));
    EXPECT_TRUE(TestOperation::logged("2 Unable to encode hostname : na me, error : 7629"));
    EXPECT_TRUE(client.requests.empty());
}

TEST(ServerRequests, AReasonThatCannotBeEncodedSendsNothing) {
    FakeClient client;
    client.unencodable = "why";
    client.encoderStatus = 7629;
    TestOperation test({"-server", "primary", "-reason", "why"});
    const Outcome outcome = send(test, CURL_PUT);
    EXPECT_EQ(outcome.result, 7629);
    EXPECT_EQ(outcome.printed.err, lineOf(7629));
    EXPECT_TRUE(TestOperation::logged("2 Unable to encode reason: why, error: 7629"));
    EXPECT_TRUE(client.requests.empty());
}

TEST(ServerRequests, AnUnknownMethodIsRefused) {
    for (const int method : {-1, CURL_POST + 1, 9}) {
        FakeClient client;
        TestOperation test;
        const Outcome outcome = send(test, static_cast<CurlRequestType>(method));
        EXPECT_EQ(outcome.result, 20);
        EXPECT_EQ(
            outcome.printed.err,
            "Unknown Request Type " + std::to_string(method) + "\n" + lineOf(20));
        EXPECT_TRUE(TestOperation::logged("16 Unknown Request Type"));
        EXPECT_TRUE(client.requests.empty());
    }
}

TEST(ServerRequests, AnEmptyServerNameIsNoServer) {
    FakeClient client;
    TestOperation test({"-server"});
    const Outcome outcome = send(test, CURL_GET);
    EXPECT_EQ(outcome.result, 37);
    EXPECT_EQ(outcome.printed.err, lineOf(37));
    EXPECT_TRUE(TestOperation::logged("16 Master Server not found"));
    EXPECT_TRUE(client.requests.empty());
}

}  // namespace
