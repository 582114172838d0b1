#include "hostmgmt/operations/AkHostMgmtAddHost.h"

#include "support/OptionTable.h"
#include "support/StandardInput.h"
#include "support/TestChange.h"

#include <algorithm>

namespace {

using support::FakeReply;
using support::StandardInput;

const std::string warning =
    "It is not recommended to manually add a host except for specific scenarios. For more details, "
    "refer to the Adding a Arkeon host manually section from the Arkeon Security and Encryption "
    "Guide.\n";
const std::string question = "Do you really want to add a host? (y/n): ";
const std::string again = "Please type 'y' for yes or 'n' for no: ";
const std::string added = "The host h is added in the host database\n";

/// A run whose standard input holds `answers`; the server would answer a request with 201.
Change runWith(const std::string& answers, bool sends) {
    const StandardInput input(answers);
    return change<AkHostMgmtAddHost>(
        {"-addhost", "-host", "h"},
        sends ? std::deque<FakeReply>{{0, 201, "{}"}} : std::deque<FakeReply>{});
}

bool logged(const Change& run, const std::string& text) {
    return std::find(run.log.begin(), run.log.end(), "2 " + text) != run.log.end();
}

void expectConfirmed(const std::string& answers, const std::string& retries = "") {
    const Change run = runWith(answers, true);
    EXPECT_EQ(run.requests.size(), 1U) << answers;
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, warning + question + retries + added) << answers;
    EXPECT_TRUE(logged(run, "Continuing as 'y' or 'yes' is entered."));
}

void expectDeclined(const std::string& answers, const std::string& retries = "") {
    const Change run = runWith(answers, false);
    EXPECT_TRUE(run.requests.empty()) << answers;
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.out, warning + question + retries) << answers;
    EXPECT_EQ(run.log.back(), "2 Exiting as 'n' or 'no' is entered.");
}

TEST(AddHostTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtAddHost>(
        "-addhost", {{"server", "s"}, {"host", "n"}, {"reason", "r"}, {"help", "h", noValue}});
}

TEST(AddHostArguments, TheOperationIsNamedAsItIsGiven) {
    for (const char* option : {"-addhost", "-ah", "-AddHost", "-AH"}) {
        EXPECT_EQ(refusalOf<AkHostMgmtAddHost>({option, "-n", "h"}), "") << option;
    }
}

TEST(AddHostArguments, AHostIsRequiredWhichIsNotLogged) {
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAddHost>({"-ah"}),
        "The following option is required and was not specified:\nhost");
    EXPECT_EQ(loggedRefusalOf<AkHostMgmtAddHost>({"-ah", "-h"}), "Help requested.");
}

TEST(AddHostArguments, TheRulesHaveTheirOrder) {
    const std::string slashes = "(logged) Host name must not contain slashes ('/' or '\\')";
    const std::string longName(1025, 'n');
    EXPECT_EQ(loggedRefusalOf<AkHostMgmtAddHost>({"-ah", "-n", "a/b"}), slashes);
    EXPECT_EQ(loggedRefusalOf<AkHostMgmtAddHost>({"-ah", "-n", longName + "\\"}), slashes);
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAddHost>({"-ah", "-host", longName + "\xff"}),
        "(logged) The value for the following parameter is too long.\nhost");
    EXPECT_EQ(
        loggedRefusalOf<AkHostMgmtAddHost>({"-ah", "-host", "b\xfcro"}),
        "Invalid value supplied for option\nhost");
    EXPECT_EQ(
        refusalOf<AkHostMgmtAddHost>(
            {"-ah", "-n", std::string(1024, 'n'), "-r", std::string(5000, 'r')}),
        "");
}

TEST(AddHostDialogue, YesInAnyLetterCaseConfirms) {
    for (const char* answer : {"yes\n", "y\n", "YES\n", "Y\n", "Yes\n", "yEs\nno\n", "y", "yes"}) {
        expectConfirmed(answer);
    }
}

TEST(AddHostDialogue, NoInAnyLetterCaseDeclines) {
    for (const char* answer : {"no\n", "n\n", "NO\n", "N\n", "No\nyes\n", "n", "no", "nO"}) {
        expectDeclined(answer);
    }
}

TEST(AddHostDialogue, EverythingElseIsAskedAgain) {
    for (const std::string& answer :
         {std::string(), std::string(" y"), std::string("y "), std::string("yess"),
          std::string("y\r"), std::string("y\0", 2), std::string("no\0", 3), std::string(9000, 'y'),
          std::string("nope")}) {
        expectDeclined(answer + "\nn\n", again);
        expectConfirmed(answer + "\ny\n", again);
    }
    expectDeclined("a\nb\nc\nn\n", again + again + again);
}

TEST(AddHostDialogue, EveryRepeatedQuestionIsLogged) {
    const Change run = runWith("a\nb\nn\n", false);
    EXPECT_EQ(std::count(run.log.begin(), run.log.end(), "2 " + again), 2);
    EXPECT_FALSE(logged(run, question));
}

TEST(AddHostDialogue, TheEndOfTheInputConfirmsUnlessItDeclines) {
    expectConfirmed("");
    expectConfirmed("maybe");
    expectConfirmed("maybe\n", again);
    expectConfirmed("\n", again);
    expectDeclined("maybe\nno", again);
}

TEST(AddHostDialogue, WhatFollowsTheAnswerIsLeftForOthers) {
    const StandardInput input("maybe\ny\nnext\n");
    change<AkHostMgmtAddHost>({"-ah", "-n", "h"}, {FakeReply{0, 201, "{}"}});
    EXPECT_EQ(StandardInput::rest(), "next\n");
}

TEST(AddHostRequest, IsAPostToTheCollection) {
    const StandardInput input("y\n");
    const Change run = change<AkHostMgmtAddHost>(
        {"-ah", "-n", "b\xc3\xbcro \"1\"", "-r", "new"}, {FakeReply{0, 200, "{}"}});
    ASSERT_EQ(run.requests.size(), 1U);
    EXPECT_EQ(run.requests[0].method, "POST");
    EXPECT_EQ(run.requests[0].uri, "arkeon/config/hosts/");
    EXPECT_EQ(run.requests[0].body, "{\"hostName\":\"b\xc3\xbcro \\\"1\\\"\"}");
    EXPECT_TRUE(run.requests[0].withToken);
    EXPECT_EQ(
        run.out, warning + question + "The host b\xc3\xbcro \"1\" is added in the host database\n");
}

TEST(AddHostRequest, ThatFailsAnnouncesNothing) {
    const StandardInput input("y\n");
    const Change run = change<AkHostMgmtAddHost>({"-ah", "-n", "h"}, {FakeReply{0, 204, ""}});
    EXPECT_EQ(run.result, 7610);
    EXPECT_EQ(run.out, warning + question);
    EXPECT_TRUE(logged(run, "Http return code : 204, Response string : "));
}

TEST(AddHostRequest, WithoutAReplyHasTheStatus0) {
    const StandardInput input("y\n");
    const Change run = change<AkHostMgmtAddHost>({"-ah", "-n", "h"}, {FakeReply{7621, 0, ""}});
    EXPECT_EQ(run.result, 7621);
    EXPECT_TRUE(logged(run, "Http return code : 0, Response string : "));
}

TEST(AddHostResult, OfAnyOtherStatusIsAnEmptyLine) {
    LogLines lines;
    AkHostMgmtAddHost operation(parsed({"-ah", "-n", "h"}), lines.log);
    EXPECT_EQ(printedBy([&] { operation.printMessageString(204); }).out, "\n");
    EXPECT_EQ(LogLines::lines().back(), "2 ");
}

TEST(AddHostHelp, IsTheSynopsisWithinTheUsage) {
    expectUsage<AkHostMgmtAddHost>(
        "-ah", AkHostMgmtAddHost::printHelp,
        "akhostmgmt -addhost -host testhost1  -server ABCserver \n");
}

}  // namespace
