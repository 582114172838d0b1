#include "arkeon/status.h"
#include "cmdframework/Messages.h"
#include "support/Environment.h"
#include "support/FakeClient.h"
#include "support/StatusLines.h"
#include "support/Streams.h"
#include "support/TempDir.h"
#include "support/TestOperation.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using support::FakeClient;

/// A configuration root whose master configuration is the given text.
class Root {
public:
    explicit Root(const std::string& masterConfig) : variable_("ARKEON_ROOT", dir.path().string()) {
        dir.write("etc/master.toml", masterConfig);
    }

    support::TempDir dir;

private:
    support::ScopedVariable variable_;
};

constexpr const char* plainConfig = "[primary_server]\nname = \"configured\"\n";

TEST(GetMasterServer, TheOptionWinsOverTheConfiguration) {
    const Root root(plainConfig);
    EXPECT_EQ(TestOperation({"-server", "given"}).operation.getMasterServer(), "given");
    EXPECT_EQ(TestOperation({"-S", "given"}).operation.getMasterServer(), "given");
}

TEST(GetMasterServer, OtherwiseTheConfigurationNamesIt) {
    const Root root(plainConfig);
    EXPECT_EQ(TestOperation(noOptions).operation.getMasterServer(), "configured");
}

TEST(GetMasterServer, AnEmptyOptionGivesAnEmptyName) {
    const Root root(plainConfig);
    EXPECT_EQ(TestOperation({"-server"}).operation.getMasterServer(), "");
}

TEST(GetMasterServer, WithoutAPrimaryServerTheReasonIsShownAndALogicErrorEndsTheRun) {
    const std::pair<const char*, const char*> rows[] = {
        {"not toml", "Error occurred during initialization, check master configuration file"},
        {"[cluster]\nactive_node = false\n", "akhostmgmt: no master server record found"},
        {"[primary_server]\n", "akhostmgmt: no master server name found"},
        {"[primary_server]\nname = \"\"\n", "akhostmgmt: no master server name found"},
    };
    for (const auto& [config, text] : rows) {
        const Root root(config);
        TestOperation test(noOptions);
        std::string reason;
        const Printed printed = printedBy([&] {
            try {
                test.operation.getMasterServer();
            } catch (const std::logic_error& failure) {
                reason = failure.what();
            }
        });
        EXPECT_EQ(reason, getECMessage(arkeon::status::noPrimaryServer));
        EXPECT_EQ(printed.err, std::string(text) + "\n") << config;
        EXPECT_TRUE(TestOperation::logged(std::string("16 ") + text));
    }
}

std::string certificateRow(const std::string& type, const std::string& server) {
    return "[[certificate]]\ntype = \"" + type + "\"\nserver = \"" + server +
           "\"\nhost_id = \"id-of-" + type +
           "\"\ncertificate = \"c\"\nprivate_key = \"k\"\nca = \"a\"\n";
}

TEST(GetHostIDfromCertmapinfo, FindsTheLocalHostsId) {
    const Root root(plainConfig);
    root.dir.write("etc/certificates.toml", certificateRow("host", "CONFIGURED"));
    TestOperation test(noOptions);
    std::string id;
    EXPECT_EQ(test.operation.getHostIDfromCertmapinfo(id), 0);
    EXPECT_EQ(id, "id-of-host");
    EXPECT_TRUE(TestOperation::logged(
        "2 AkHostMgmtBaseOption::getHostIDfromCertmapinfo, UUID = id-of-host"));
}

TEST(GetHostIDfromCertmapinfo, OnTheActiveNodeOfAClusterItIsTheClustersId) {
    const Root root("[primary_server]\nname = \"m\"\n[cluster]\nactive_node = true\n");
    root.dir.write(
        "etc/certificates.toml", certificateRow("host", "m") + certificateRow("cluster", "m"));
    TestOperation test(noOptions);
    std::string id;
    EXPECT_EQ(test.operation.getHostIDfromCertmapinfo(id), 0);
    EXPECT_EQ(id, "id-of-cluster");
}

TEST(GetHostIDfromCertmapinfo, FailuresAreLoggedAndReturned) {
    const Root root(plainConfig);
    TestOperation noRow(noOptions);
    std::string id = "before";
    EXPECT_EQ(noRow.operation.getHostIDfromCertmapinfo(id), 7640);
    EXPECT_EQ(id, "before");
    EXPECT_TRUE(TestOperation::logged("16 AkHostMgmtBaseOption::getHostIDfromCertmapinfo, "
                                      "getHostID() failed, retval = 7640"));
    TestOperation noServer({"-server"});
    EXPECT_EQ(noServer.operation.getHostIDfromCertmapinfo(id), 37);
    EXPECT_TRUE(TestOperation::logged("16 AkHostMgmtBaseOption::getHostIDfromCertmapinfo, failed "
                                      "to get master server name"));
}

/// What a look-up by name gives.
struct Lookup {
    int result = -1;
    std::string id;
    std::string err;
};

Lookup lookUp(const support::FakeReply& reply) {
    FakeClient client({reply});
    TestOperation test({"-server", "p", "-n", "na me"});
    Lookup lookup;
    lookup.err = printedBy([&] { lookup.result = test.operation.getUuid(lookup.id); }).err;
    EXPECT_EQ(client.requests.at(0).method, "GET");
    EXPECT_EQ(client.requests.at(0).uri, "arkeon/config/hosts/hostmappings?mappedhostname=na%20me");
    EXPECT_TRUE(client.requests.at(0).withToken);
    return lookup;
}

TEST(GetUuid, AGivenHostIdAsksNobody) {
    FakeClient client;
    for (const char* option : {"-hostid", "-i"}) {
        TestOperation test({option, "X", "-host", "name"});
        std::string id;
        EXPECT_EQ(test.operation.getUuid(id), 0);
        EXPECT_EQ(id, "X");
    }
}

TEST(GetUuid, AnUnambiguousNameGivesTheHostId) {
    const Lookup lookup = lookUp({0, 200, R"({"hosts":[{"uuid":"U"}]})"});
    EXPECT_EQ(lookup.result, 0);
    EXPECT_EQ(lookup.id, "U");
    EXPECT_EQ(lookup.err, "");
    EXPECT_TRUE(TestOperation::logged("2 HostID corresponding to mappedhostname: U"));
}

TEST(GetUuid, TheReplyLeavesThePayloadAlone) {
    FakeClient client({{0, 200, R"({"hosts":[{"uuid":"U"}]})"}});
    TestOperation test({"-server", "p", "-host", "name"});
    std::string id;
    EXPECT_EQ(test.operation.getUuid(id), 0);
    EXPECT_EQ(test.operation.getJSONpayload(), "{}");
}

TEST(GetUuid, ANameOfTwoHostsIs8900) {
    const Lookup lookup = lookUp({0, 200, R"({"hosts":[{"uuid":"U"},{"uuid":"V"}]})"});
    EXPECT_EQ(lookup.result, 8900);
    const std::string text =
        "The host name that was provided must be associated with a single host ID.";
    EXPECT_EQ(lookup.err, "Exit Status 8900: " + text + "\n");
    EXPECT_TRUE(TestOperation::logged("16 " + text));
}

TEST(GetUuid, AnUnknownNameIs8701) {
    const Lookup lookup = lookUp({0, 200, R"({"hosts":[]})"});
    EXPECT_EQ(lookup.result, 8701);
    EXPECT_EQ(lookup.err, lineOf(8701));
}

TEST(GetUuid, ALookupNeverSucceedsWithoutAHostId) {
    const std::pair<support::FakeReply, const char*> rows[] = {
        {{0, 200, R"({"hosts":[{}]})"}, "16 UUID is NULL"},
        {{0, 200, R"({"hosts":[{"uuid":""}]})"}, "16 UUID is NULL"},
        {{0, 200, R"({"hosts":[{"uuid":null}]})"}, "16 UUID is NULL"},
        {{0, 200, R"({"hosts":[{"uuid":5}]})"}, "16 UUID is NULL"},
        {{0, 200, R"({"hosts":["U"]})"}, "16 UUID is NULL"},
        {{0, 200, "{}"}, "16 Hosts value is NULL"},
        {{0, 200, R"({"hosts":null})"}, "16 Hosts value is NULL"},
        {{0, 200, R"({"hosts":{"uuid":"U"}})"}, "16 Hosts value is NULL"},
        {{0, 200, "[]"}, "16 Hosts value is NULL"},
        {{0, 200, "<html>"}, "16 load_json() failed:<html>\n"},
        {{0, 500, R"({"errorCode":0,"errorMessage":"m"})"},
         "16 Error code returned by server is :0\n"},
        {{0, 404, ""}, "16 load_json() failed:\n"},
    };
    for (const auto& [reply, line] : rows) {
        const Lookup lookup = lookUp(reply);
        EXPECT_EQ(lookup.result, 7610) << reply.body;
        EXPECT_EQ(lookup.id, "") << reply.body;
        EXPECT_EQ(lookup.err, lineOf(7610)) << reply.body;
        EXPECT_TRUE(TestOperation::logged(line)) << line;
    }
}

TEST(GetUuid, TheServersErrorIsReported) {
    const Lookup lookup = lookUp({0, 403, R"({"errorCode":1234,"errorMessage":"m"})"});
    EXPECT_EQ(lookup.result, 1234);
    EXPECT_EQ(lookup.err, lineOf(1234));
}

TEST(GetUuid, AnyOtherStatusThan200IsAnError) {
    EXPECT_EQ(lookUp({0, 201, R"({"hosts":[{"uuid":"U"}]})"}).result, 7610);
    EXPECT_EQ(lookUp({0, 204, ""}).result, 7610);
}

TEST(GetUuid, ALoginThatIsNeededIsAskedForOnceWithoutAStatusLine) {
    for (const int status : {5930, 117, 118}) {
        const Lookup lookup = lookUp({status, 0, ""});
        EXPECT_EQ(lookup.result, status);
        EXPECT_EQ(lookup.err, webLogin + "\n");
    }
}

TEST(GetUuid, ATransportFailureIsReported) {
    const Lookup lookup = lookUp({7625, 0, ""});
    EXPECT_EQ(lookup.result, 7625);
    EXPECT_EQ(lookup.err, lineOf(7625));
}

}  // namespace
