#include "hostmgmt/operations/AkHostMgmtReissueCert.h"

#include "support/OptionTable.h"
#include "support/TestChange.h"

namespace {

using support::FakeReply;

const std::string onLines =
    "This option lets you reissue certificate on the host without requiring a reissue token. By "
    "default, the option is disabled after 48 hours.\n"
    "The auto reissue certificate parameter is enabled for ID.\n";
const std::string offLines =
    "This option resets the auto reissue certificate parameter. You will require a reissue token "
    "to deploy a certificate on the host.\n"
    "The auto reissue certificate parameter is disabled for ID.\n";

std::string refusalOfValue(const std::string& value) {
    return loggedRefusalOf<AkHostMgmtReissueCert>({"-aa", "-i", "x", "-ar", value});
}

TEST(ReissueTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtReissueCert>(
        "-allowautoreissuecert", {{"server", "s"},
                                  {"hostid", "i"},
                                  {"host", "n"},
                                  {"reason", "r"},
                                  {"autoreissue", "ar", unsignedValue},
                                  {"help", "h", noValue}});
}

TEST(ReissueArguments, TheOperationIsNamedAsItIsGiven) {
    for (const char* option : {"-allowautoreissuecert", "-aa", "-AllowAutoReissueCert", "-AA"}) {
        EXPECT_EQ(refusalOf<AkHostMgmtReissueCert>({option, "-i", "x", "-ar", "1"}), "") << option;
    }
}

TEST(ReissueArguments, AValueIsRequiredLastWhichIsNotLogged) {
    const std::string missing =
        "The following option is required and was not specified:\nautoreissue";
    EXPECT_EQ(loggedRefusalOf<AkHostMgmtReissueCert>({"-aa", "-i", "x"}), missing);
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtReissueCert>({"-aa", "-n", std::string(1025, 'n')}),
        "(logged) The value for the following parameter is too long.\nhost");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtReissueCert>({"-aa", "-n", "a/b", "-ar", "2"}),
        "(logged) Host name must not contain slashes ('/' or '\\')");
}

TEST(ReissueArguments, TheValueIsZeroOrOne) {
    const std::string neither =
        "(logged) The value for autoreissue parameter should be either 0 or 1.\n";
    EXPECT_EQ(refusalOfValue("0"), "");
    EXPECT_EQ(refusalOfValue("1"), "");
    EXPECT_EQ(refusalOfValue("2"), neither);
    EXPECT_EQ(refusalOfValue("4294967295"), neither);
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtReissueCert>({"-aa", "-i", "x", "-autoreissue", "2"}), neither);
}

TEST(ReissueArguments, WhatIsNoNumberIsRefusedBeforeEverythingElse) {
    const std::string noNumber =
        "The following option requires an unsigned integer value or the number entered was too "
        "large:\n";
    EXPECT_EQ(refusalOfValue("yes"), noNumber + "ar");
    EXPECT_EQ(refusalOfValue("4294967296"), noNumber + "ar");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtReissueCert>({"-aa", "-i", "a/b", "-autoreissue", "1x"}),
        noNumber + "autoreissue");
}

TEST(ReissueArguments, TheReasonMayHaveAnyLength) {
    EXPECT_EQ(
        refusalOf<AkHostMgmtReissueCert>(
            {"-aa", "-i", "x", "-ar", "1", "-r", std::string(5000, 'r')}),
        "");
}

TEST(ReissueRequest, IsAPatchOfTheHostWithATruthValue) {
    const Change on = change<AkHostMgmtReissueCert>(
        {"-aa", "-n", "h", "-ar", "1"}, {foundHost("ID"), FakeReply{0, 204, ""}});
    ASSERT_EQ(on.requests.size(), 2U);
    EXPECT_EQ(on.requests[1].method, "PATCH");
    EXPECT_EQ(on.requests[1].uri, "arkeon/config/hosts/ID");
    EXPECT_EQ(on.requests[1].body, R"({"autoReissue":true})");
    EXPECT_TRUE(on.requests[1].withToken);
    EXPECT_EQ(on.result, 0);
    EXPECT_EQ(on.out, onLines);
    const Change off = change<AkHostMgmtReissueCert>(
        {"-aa", "-i", "ID", "-autoreissue", "0"}, {FakeReply{0, 204, ""}});
    EXPECT_EQ(off.requests.at(0).body, R"({"autoReissue":false})");
    EXPECT_EQ(off.out, offLines);
}

TEST(ReissueRequest, ThatIsAnsweredWith200SaysTheSameInTwoLogLines) {
    const Change on =
        change<AkHostMgmtReissueCert>({"-aa", "-i", "ID", "-ar", "1"}, {FakeReply{0, 200, "{}"}});
    EXPECT_EQ(on.out, onLines);
    ASSERT_GE(on.log.size(), 2U);
    EXPECT_EQ(on.log[on.log.size() - 2].substr(2) + "\n" + on.log.back().substr(2) + "\n", onLines);
}

TEST(ReissueRequest, ThatIsAnsweredWith201PrintsTwoEmptyLines) {
    const Change run =
        change<AkHostMgmtReissueCert>({"-aa", "-i", "ID", "-ar", "1"}, {FakeReply{0, 201, "{}"}});
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "\n\n");
    EXPECT_EQ(run.log[run.log.size() - 2] + run.log.back(), "2 2 ");
}

TEST(ReissueRequest, ThatFailsAnnouncesNothing) {
    const Change refused = change<AkHostMgmtReissueCert>(
        {"-aa", "-i", "ID", "-ar", "1"},
        {FakeReply{0, 404, R"({"errorCode":8701,"errorMessage":"x"})"}});
    EXPECT_EQ(refused.result, 8701);
    EXPECT_EQ(refused.out, "");
}

TEST(ReissueHelp, IsTheSynopsisWithinTheUsage) {
    expectUsage<AkHostMgmtReissueCert>(
        "-aa", AkHostMgmtReissueCert::printHelp, "-autoreissue 1 -server ABCserver \n");
}

}  // namespace
