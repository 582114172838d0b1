#include "hostmgmt/operations/AkHostMgmtAdd.h"

#include "support/OptionTable.h"
#include "support/TestChange.h"

namespace {

using support::FakeReply;

const std::string tooLong = "(logged) The value for the following parameter is too long.\n";

TEST(AddTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtAdd>(
        "-add", {{"server", "s"},
                 {"hostid", "i"},
                 {"host", "n"},
                 {"mappingname", "hm"},
                 {"isshared", "is", noValue},
                 {"reason", "r"},
                 {"help", "h", noValue}});
}

TEST(AddArguments, TheOperationIsNamedAsItIsGiven) {
    for (const char* option : {"-add", "-a", "-ADD", "-A"}) {
        EXPECT_EQ(refusalOf<AkHostMgmtAdd>({option, "-i", "x", "-hm", "m"}), "") << option;
    }
    EXPECT_EQ(
        refusalOf<AkHostMgmtAdd>({"-add", "-a", "-i", "x", "-hm", "m"}),
        "An invalid option was used.\na");
}

TEST(AddArguments, AMappingNameIsRequiredWhichIsNotLogged) {
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-n", "a/b"}),
        "The following option is required and was not specified:\nmappingname");
}

TEST(AddArguments, TheRulesHaveTheirOrder) {
    const std::string longName(1025, 'm');
    const std::string longReason(513, 'r');
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-n", "a/b", "-hm", "c/d"}),
        "(logged) Host name must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-i", "a/b", "-hm", "c/d"}),
        "(logged) Host ID must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-n", longName, "-hm", "c\\d"}),
        "(logged) Mapping name must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-n", longName, "-hm", longName}),
        tooLong + "host");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-i", "x", "-hm", longName, "-r", longReason}),
        tooLong + "mappingname");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAdd>({"-add", "-i", "x", "-hm", "m", "-r", longReason}),
        tooLong + "reason");
}

TEST(AddArguments, TheLimitsThemselvesPass) {
    EXPECT_EQ(
        refusalOf<AkHostMgmtAdd>(
            {"-add", "-n", std::string(1024, 'n'), "-hm", std::string(1024, 'm'), "-r",
             std::string(512, 'r')}),
        "");
}

TEST(AddRequest, IsAPutOfTheMapping) {
    const Change run = change<AkHostMgmtAdd>(
        {"-add", "-i", "ID", "-hm", "a b", "-is", "-r", "why not"}, {FakeReply{0, 201, "{}"}});
    ASSERT_EQ(run.requests.size(), 1U);
    EXPECT_EQ(run.requests[0].method, "PUT");
    EXPECT_EQ(run.requests[0].uri, "arkeon/config/hosts/ID/hostmappings/a%20b");
    EXPECT_EQ(run.requests[0].body, R"({"isShared":true})");
    EXPECT_TRUE(run.requests[0].withToken);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "a b is successfully mapped to ID.\n");
    EXPECT_EQ(run.log.back(), "2 a b is successfully mapped to ID.");
}

TEST(AddRequest, ComesAfterTheLookUpOfAName) {
    const Change run = change<AkHostMgmtAdd>(
        {"-a", "-n", "h", "-hm", "m"}, {foundHost("ID"), FakeReply{0, 200, "{}"}});
    ASSERT_EQ(run.requests.size(), 2U);
    EXPECT_EQ(run.requests[0].uri, "arkeon/config/hosts/hostmappings?mappedhostname=h");
    EXPECT_EQ(run.requests[1].uri, "arkeon/config/hosts/ID/hostmappings/m");
    EXPECT_EQ(run.requests[1].body, R"({"isShared":false})");
    EXPECT_EQ(run.out, "m is successfully updated.\n");
}

TEST(AddRequest, ThatFailsAnnouncesNothing) {
    const Change run =
        change<AkHostMgmtAdd>({"-a", "-i", "ID", "-hm", "m"}, {FakeReply{0, 204, ""}});
    EXPECT_EQ(run.result, 7610);
    EXPECT_EQ(run.out, "");
}

TEST(AddResult, OfAnyOtherStatusIsAnEmptyLine) {
    LogLines lines;
    AkHostMgmtAdd operation(parsed({"-add", "-i", "ID", "-hm", "m"}), lines.log);
    EXPECT_EQ(printedBy([&] { operation.printMessageString(204); }).out, "\n");
    EXPECT_EQ(LogLines::lines().back(), "2 ");
}

TEST(AddHelp, IsTheSynopsisWithinTheUsage) {
    expectUsage<AkHostMgmtAdd>(
        "-add", AkHostMgmtAdd::printHelp, "-mappingname testhost3 -isshared\n");
}

}  // namespace
