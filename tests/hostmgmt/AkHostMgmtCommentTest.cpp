#include "hostmgmt/operations/AkHostMgmtComment.h"

#include "support/OptionTable.h"
#include "support/TestChange.h"

namespace {

using support::FakeReply;
using Lines = std::vector<std::string>;

const std::string tooLong = "(logged) The value for the following parameter is too long.\n";

TEST(CommentTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtComment>(
        "-addcomment", {{"server", "s"},
                        {"hostid", "i"},
                        {"host", "n"},
                        {"comment", "c"},
                        {"help", "h", noValue}});
}

TEST(CommentOperation, IsToldFromTheNameAndLoggedWithTwoDifferentLabels) {
    const std::pair<const char*, bool> rows[] = {
        {"-addcomment", true},     {"-ac", true},  {"-AddComment", true}, {"-AC", true},
        {"-deletecomment", false}, {"-dc", false}, {"-DC", false},
    };
    for (const auto& [option, adds] : rows) {
        LogLines lines;
        const AkHostMgmtComment operation(parsed({option}), lines.log);
        EXPECT_EQ(
            LogLines::lines(),
            (Lines{
                std::string("2  Performing addcomment operation(If 1 Yes, Else No): ") +
                    (adds ? "1" : "0"),
                std::string("2  Performing deletecomment operation(If 1 Yes, Else No):") +
                    (adds ? "0" : "1")}))
            << option;
    }
}

TEST(CommentOperation, OfSeveralNamesTheFirstOfAFixedOrderCounts) {
    const std::pair<Lines, const char*> rows[] = {
        {{"-ac", "-addcomment", "-i", "x"}, "ac"},
        {{"-deletecomment", "-ac", "-i", "x"}, "deletecomment"},
        {{"-dc", "-deletecomment", "-i", "x"}, "dc"},
    };
    for (const auto& [options, unknown] : rows) {
        EXPECT_EQ(
            refusalOf<AkHostMgmtComment>(options),
            std::string("An invalid option was used.\n") + unknown);
    }
}

TEST(CommentArguments, ACommentIsRequiredToAddOneWhichIsNotLogged) {
    for (const char* option : {"-addcomment", "-ac"}) {
        EXPECT_EQ(
            loggedRefusalOf<AkHostMgmtComment>({option, "-i", "a/b"}),
            "The following option is required and was not specified:\ncomment");
    }
}

TEST(CommentArguments, ACommentIsRefusedToDeleteOneWhichIsNotLogged) {
    for (const char* option : {"-deletecomment", "-dc"}) {
        EXPECT_EQ(
            loggedRefusalOf<AkHostMgmtComment>({option, "-n", "a/b", "-c", "x"}),
            "An invalid option was used.\ncomment");
        EXPECT_EQ(refusalOf<AkHostMgmtComment>({option, "-n", "h"}), "");
    }
}

TEST(CommentArguments, TheRulesHaveTheirOrder) {
    const std::string longComment(2049, 'c');
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtComment>({"-ac", "-i", "a/b", "-c", longComment}),
        "(logged) Host ID must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtComment>({"-ac", "-n", "a/b", "-c", longComment}),
        "(logged) Host name must not contain slashes ('/' or '\\')");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtComment>(
            {"-ac", "-n", std::string(1025, 'n'), "-c", longComment}),
        tooLong + "host");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtComment>({"-ac", "-n", "h", "-c", longComment + "\xff"}),
        tooLong + "comment");
}

TEST(CommentArguments, CommentsHaveAtMost2048Bytes) {
    EXPECT_EQ(refusalOf<AkHostMgmtComment>({"-ac", "-n", "h", "-c", std::string(2048, 'c')}), "");
}

TEST(CommentArguments, ACommentThatIsNotUtf8IsRefused) {
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtComment>({"-ac", "-n", "h", "-c", "\xff"}),
        "Invalid value supplied for option\ncomment");
}

TEST(CommentRequest, IsAPutOfTheCommentAsTyped) {
    const Change run = change<AkHostMgmtComment>(
        {"-ac", "-n", "h", "-c", " rack\t1 \"\xc3\xa4\" "},
        {foundHost("ID"), FakeReply{0, 200, "{}"}});
    ASSERT_EQ(run.requests.size(), 2U);
    EXPECT_EQ(run.requests[1].method, "PUT");
    EXPECT_EQ(run.requests[1].uri, "arkeon/config/hosts/ID/comment");
    EXPECT_EQ(run.requests[1].body, "{\"comment\":\" rack\\t1 \\\"\xc3\xa4\\\" \"}");
    EXPECT_TRUE(run.requests[1].withToken);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, "Comment for ID is successfully added.\n");
    EXPECT_EQ(run.log.back(), "2 Comment for ID is successfully added.");
}

TEST(CommentRequest, ToDeleteIsAPutOfTheEmptyComment) {
    const Change run = change<AkHostMgmtComment>({"-dc", "-i", "ID"}, {FakeReply{0, 200, "{}"}});
    ASSERT_EQ(run.requests.size(), 1U);
    EXPECT_EQ(run.requests[0].method, "PUT");
    EXPECT_EQ(run.requests[0].uri, "arkeon/config/hosts/ID/comment");
    EXPECT_EQ(run.requests[0].body, R"({"comment":""})");
    EXPECT_EQ(run.out, "Comment for ID is successfully removed.\n");
}

TEST(CommentRequest, ACommentOfBlanksIsMissingOnceTheHostIsKnown) {
    support::FakeClient client({foundHost("ID")});
    LogLines lines;
    AkHostMgmtComment operation(parsed({"-ac", "-s", "p", "-n", "h", "-c", "   "}), lines.log);
    operation.checkArguments();
    EXPECT_EQ(
        usageFailureOf([&operation] { operation.execute(); }),
        "The value for this option was missing:\ncomment");
    EXPECT_EQ(client.requests.size(), 1U);
}

TEST(CommentRequest, ATabIsContent) {
    const Change run =
        change<AkHostMgmtComment>({"-ac", "-i", "ID", "-c", " \t"}, {FakeReply{0, 200, "{}"}});
    EXPECT_EQ(run.requests.at(0).body, R"({"comment":" \t"})");
}

TEST(CommentRequest, ThatFailsAnnouncesNothing) {
    const Change lookUp =
        change<AkHostMgmtComment>({"-dc", "-n", "h"}, {FakeReply{0, 200, R"({"hosts":[]})"}});
    EXPECT_EQ(lookUp.requests.size(), 1U);
    EXPECT_EQ(lookUp.result, 8701);
    const Change refused = change<AkHostMgmtComment>({"-dc", "-i", "ID"}, {FakeReply{0, 204, ""}});
    EXPECT_EQ(refused.result, 7610);
    EXPECT_EQ(refused.out, "");
}

TEST(CommentResult, IsWrittenAtOnce) {
    LogLines lines;
    AkHostMgmtComment operation(parsed({"-dc", "-i", "ID"}), lines.log);
    testing::internal::CaptureStdout();
    operation.printMessageString(200);
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
}

TEST(CommentResult, OfAnyOtherStatusIsAnEmptyLine) {
    for (const int status : {201, 204}) {
        LogLines lines;
        AkHostMgmtComment operation(parsed({"-ac", "-i", "ID", "-c", "c"}), lines.log);
        EXPECT_EQ(printedBy([&] { operation.printMessageString(status); }).out, "\n");
        EXPECT_EQ(LogLines::lines().back(), "2 ");
    }
}

TEST(CommentHelp, ShowsTheUsageOfTheOperationThatWasAskedFor) {
    expectUsage<AkHostMgmtComment>(
        "-ac", AkHostMgmtComment::printAddCommentHelp,
        "\"This host is part of zone1\" -server ABCserver \n");
    expectUsage<AkHostMgmtComment>(
        "-deletecomment", AkHostMgmtComment::printDeleteCommentHelp,
        "akhostmgmt -deletecomment -host testhost1 \n");
    EXPECT_EQ(usageOf<AkHostMgmtComment>({"-ac"}).find("-deletecomment"), std::string::npos);
    EXPECT_EQ(usageOf<AkHostMgmtComment>({"-dc"}).find("-addcomment"), std::string::npos);
}

TEST(CommentHelp, ShowsTheSynopsesOfBothOperations) {
    EXPECT_EQ(
        printedBy(AkHostMgmtComment::printHelp).out,
        printedBy(AkHostMgmtComment::printAddCommentHelp).out +
            printedBy(AkHostMgmtComment::printDeleteCommentHelp).out);
}

}  // namespace
