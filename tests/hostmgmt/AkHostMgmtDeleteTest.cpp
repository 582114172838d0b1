#include "hostmgmt/operations/AkHostMgmtDelete.h"

#include "support/OptionTable.h"
#include "support/TestChange.h"

namespace {

using support::FakeReply;

const std::string tooLong = "(logged) The value for the following parameter is too long.\n";

TEST(DeleteTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtDelete>(
        "-delete", {{"server", "s"},
                    {"hostid", "i"},
                    {"host", "n"},
                    {"mappingname", "hm"},
                    {"reason", "r"},
                    {"help", "h", noValue}});
}

TEST(DeleteArguments, TheOperationIsNamedAsItIsGiven) {
    for (const char* option : {"-delete", "-d", "-Delete", "-D"}) {
        EXPECT_EQ(refusalOf<AkHostMgmtDelete>({option, "-i", "x", "-hm", "m"}), "") << option;
    }
}

TEST(DeleteArguments, AMappingNameIsRequiredWhichIsNotLogged) {
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-delete", "-i", "a/b"}),
        "The following option is required and was not specified:\nmappingname");
}

TEST(DeleteArguments, TheRulesHaveTheirOrder) {
    const std::string longName(1025, 'm');
    const std::string longReason(513, 'r');
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-d", "-n", "a/b", "-hm", "c/d"}),
        "(logged) Host name must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-d", "-i", "a\\b", "-hm", "c/d"}),
        "(logged) Host ID must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-d", "-n", longName, "-hm", longName + "\\"}),
        "(logged) Mapping name must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-d", "-n", longName, "-hm", longName}),
        tooLong + "host");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-d", "-i", "x", "-hm", longName, "-r", longReason}),
        tooLong + "mappingname");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtDelete>({"-d", "-i", "x", "-hm", "m", "-r", longReason}),
        tooLong + "reason");
}

TEST(DeleteArguments, TheLimitsThemselvesPass) {
    EXPECT_EQ(
        refusalOf<AkHostMgmtDelete>(
            {"-d", "-n", std::string(1024, 'n'), "-hm", std::string(1024, 'm'), "-r",
             std::string(512, 'r')}),
        "");
}

TEST(DeleteRequest, IsADeleteOfTheMappingAndNamesItFirst) {
    const Change run = change<AkHostMgmtDelete>(
        {"-d", "-n", "h", "-hm", "a b"}, {foundHost("ID"), FakeReply{0, 204, ""}});
    ASSERT_EQ(run.requests.size(), 2U);
    EXPECT_EQ(run.requests[1].method, "DELETE");
    EXPECT_EQ(run.requests[1].uri, "arkeon/config/hosts/ID/hostmappings/a%20b");
    EXPECT_EQ(run.requests[1].body, "");
    EXPECT_TRUE(run.requests[1].withToken);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "Mapping between a b and ID is removed.\n");
    EXPECT_EQ(run.log.back(), "2 Mapping between a b and ID is removed.");
}

TEST(DeleteRequest, OfAMappingThatIsNotThereHasItsOwnStatus) {
    const Change run = change<AkHostMgmtDelete>(
        {"-d", "-i", "ID", "-hm", "m"},
        {FakeReply{0, 404, R"({"errorCode":8701,"errorMessage":"x"})"}});
    EXPECT_EQ(run.result, 8901);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "Exit Status 8901: The mapping name that was provided does not exist.\n");
}

TEST(DeleteResult, OfAFailureSaysNothing) {
    LogLines lines;
    AkHostMgmtDelete operation(parsed({"-delete", "-i", "ID", "-hm", "m"}), lines.log);
    EXPECT_EQ(printedBy([&] { operation.printMessageString(8901); }).out, "");
    EXPECT_TRUE(LogLines::lines().empty());
}

TEST(DeleteHelp, IsTheSynopsisWithinTheUsage) {
    expectUsage<AkHostMgmtDelete>(
        "-delete", AkHostMgmtDelete::printHelp,
        "akhostmgmt -delete -host fs001 -mappingname testhost4\n");
}

}  // namespace
