#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"

#include "support/OptionTable.h"
#include "support/TestChange.h"

namespace {

using support::FakeReply;

const std::string tooLong = "(logged) The value for the following parameter is too long.\n";
const std::string slashes = "(logged) Host name must not contain slashes ('/' or '\\')";

TEST(UpdateHostTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtUpdateHost>(
        "-updatehost", {{"server", "s"},
                        {"hostid", "i"},
                        {"host", "n"},
                        {"newhostname", "nh"},
                        {"reason", "r"},
                        {"help", "h", noValue}});
}

TEST(UpdateHostArguments, TheOperationIsNamedAsItIsGiven) {
    for (const char* option : {"-updatehost", "-uh", "-UPDATEHOST", "-UH"}) {
        EXPECT_EQ(refusalOf<AkHostMgmtUpdateHost>({option, "-i", "x", "-nh", "m"}), "") << option;
    }
}

TEST(UpdateHostArguments, ANewNameIsRequiredWhichIsNotLogged) {
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "a/b"}),
        "The following option is required and was not specified:\nnewhostname");
}

TEST(UpdateHostArguments, TheNewNameIsAHostName) {
    EXPECT_EQ(loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "x", "-nh", "a/b"}), slashes);
    EXPECT_EQ(loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "x", "-nh", "a\\b"}), slashes);
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "x", "-nh", std::string(1025, 'n')}),
        tooLong + "newhostname");
    EXPECT_EQ(
        refusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "x", "-nh", std::string(1024, 'n')}), "");
}

TEST(UpdateHostArguments, TheRulesHaveTheirOrder) {
    const std::string longName(1025, 'n');
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "a/b", "-nh", "c/d"}),
        "(logged) Host ID must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-n", longName, "-nh", "a/b"}), slashes);
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-n", longName, "-nh", longName}),
        tooLong + "host");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-i", "x", "-nh", longName + "\xff"}),
        tooLong + "newhostname");
}

TEST(UpdateHostArguments, ANewNameThatIsNotUtf8IsRefused) {
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtUpdateHost>({"-uh", "-n", "h", "-nh", "b\xfcro"}),
        "Invalid value supplied for option\nnewhostname");
}

TEST(UpdateHostArguments, TheReasonMayHaveAnyLength) {
    EXPECT_EQ(
        refusalOf<AkHostMgmtUpdateHost>(
            {"-uh", "-i", "x", "-nh", "m", "-r", std::string(5000, 'r')}),
        "");
}

TEST(UpdateHostRequest, IsAPatchOfTheHost) {
    const Change run = change<AkHostMgmtUpdateHost>(
        {"-uh", "-n", "h", "-nh", "b\xc3\xbcro \"1\""}, {foundHost("ID"), FakeReply{0, 204, ""}});
    ASSERT_EQ(run.requests.size(), 2U);
    EXPECT_EQ(run.requests[1].method, "PATCH");
    EXPECT_EQ(run.requests[1].uri, "arkeon/config/hosts/ID");
    EXPECT_EQ(run.requests[1].body, "{\"hostName\":\"b\xc3\xbcro \\\"1\\\"\"}");
    EXPECT_TRUE(run.requests[1].withToken);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "The primary host name is updated for ID\n");
    EXPECT_EQ(run.log.back(), "2 The primary host name is updated for ID");
}

TEST(UpdateHostRequest, ThatIsAnsweredWith200SaysTheSame) {
    const Change run =
        change<AkHostMgmtUpdateHost>({"-uh", "-i", "ID", "-nh", "n"}, {FakeReply{0, 200, "{}"}});
    EXPECT_EQ(run.out, "The primary host name is updated for ID\n");
}

TEST(UpdateHostRequest, ThatIsAnsweredWith201PrintsAnEmptyLine) {
    const Change run =
        change<AkHostMgmtUpdateHost>({"-uh", "-i", "ID", "-nh", "n"}, {FakeReply{0, 201, "{}"}});
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "\n");
    EXPECT_EQ(run.log.back(), "2 ");
}

TEST(UpdateHostRequest, ThatFailsAnnouncesNothing) {
    const Change refused = change<AkHostMgmtUpdateHost>(
        {"-uh", "-i", "ID", "-nh", "n"},
        {FakeReply{0, 409, R"({"errorCode":9001,"errorMessage":"x"})"}});
    EXPECT_EQ(refused.result, 9001);
    EXPECT_EQ(refused.out, "");
}

TEST(UpdateHostHelp, IsTheSynopsisWithinTheUsage) {
    expectUsage<AkHostMgmtUpdateHost>(
        "-updatehost", AkHostMgmtUpdateHost::printHelp, "-host testhost1 -newhostname testhost2\n");
}

}  // namespace
