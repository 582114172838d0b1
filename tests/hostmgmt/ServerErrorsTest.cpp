#include "hostmgmt/server/ServerErrors.h"

#include "arkeon/console.h"
#include "cmdframework/Logcmd.h"
#include "cmdframework/Messages.h"
#include "support/StatusLines.h"
#include "support/Streams.h"
#include "support/TestOperation.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

TEST(ServerErrors, CodeAndMessageAreReadAndLogged) {
    TestOperation test;
    long code = 0;
    EXPECT_EQ(
        test.operation.logErrorMessage(R"({"errorCode":8701,"errorMessage":"no host"})", code), 0);
    EXPECT_EQ(code, 8701);
    EXPECT_EQ(
        LogLines::lines(), (Lines{
                               "16 Error code returned by server is :8701\n",
                               "16 Error message returned by server is :no host\n"}));
}

struct Row {
    const char* reply;
    int result;
    long code;
};

TEST(ServerErrors, WhatCountsAsACode) {
    const Row rows[] = {
        {R"({"errorCode":0,"errorMessage":""})", 0, 0},
        {R"({"errorCode":-1,"errorMessage":"m"})", 0, -1},
        {R"({"errorCode":7680,"errorMessage":"m"})", 0, 7680},
        {R"({"errorCode":2147483647,"errorMessage":"m"})", 0, 2147483647},
        {R"({"errorCode":-2147483648,"errorMessage":"m"})", 0, -2147483648},
        {R"({"errorCode":2147483648,"errorMessage":"m"})", 7610, 7610},
        {R"({"errorCode":-2147483649,"errorMessage":"m"})", 7610, 7610},
        {R"({"errorCode":99999999999999999999,"errorMessage":"m"})", 7610, 7610},
        {R"({"errorCode":"8701","errorMessage":"m"})", 7610, 7610},
        {R"({"errorCode":8701.5,"errorMessage":"m"})", 7610, 7610},
        {R"({"errorCode":null,"errorMessage":"m"})", 7610, 7610},
        {R"({"errorCode":8701})", 7610, 7610},
        {R"({"errorCode":8701,"errorMessage":5})", 7610, 7610},
        {R"({"errorMessage":"m"})", 7610, 7610},
        {R"({})", 7610, 7610},
        {R"([])", 7610, 7610},
        {"", 7610, 7610},
        {"<html>Bad gateway</html>", 7610, 7610},
    };
    for (const Row& row : rows) {
        TestOperation test;
        long code = 99;
        EXPECT_EQ(test.operation.logErrorMessage(row.reply, code), row.result) << row.reply;
        EXPECT_EQ(code, row.code) << row.reply;
    }
}

TEST(ServerErrors, AReplyWithoutCodeSaysSoInTheLog) {
    TestOperation test;
    long code = 0;
    test.operation.logErrorMessage("{}", code);
    EXPECT_EQ(LogLines::lines(), Lines{"16 No error code in response."});
}

TEST(ServerErrors, NothingHappensForZero) {
    TestOperation test;
    const Printed printed = printedBy([&] { test.operation.submitErrorStringForWebApi(0); });
    EXPECT_EQ(printed.err + printed.out, "");
    EXPECT_TRUE(LogLines::lines().empty());
}

TEST(ServerErrors, TheStatusLineCarriesCodeAndText) {
    for (const int code : {8701, 7610, 5930, 20, -5, 123456}) {
        TestOperation test;
        const Printed printed = printedBy([&] { test.operation.submitErrorStringForWebApi(code); });
        EXPECT_EQ(printed.err, lineOf(code));
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(LogLines::lines(), Lines{std::string("16 ") + getECMessage(code)});
    }
}

TEST(ServerErrors, ForALoginThatIsRefusedOrExpiredTheLoginIsAskedForFirst) {
    for (const int code : {117, 118}) {
        TestOperation test;
        const Printed printed = printedBy([&] { test.operation.submitErrorStringForWebApi(code); });
        EXPECT_EQ(printed.err, webLogin + "\n" + lineOf(code));
        EXPECT_EQ(
            LogLines::lines(), (Lines{"16 " + webLogin, std::string("16 ") + getECMessage(code)}));
    }
}

TEST(ServerErrors, AStatusIsLoggedBeforeItIsPrinted) {
    CLogcmd log;
    log.init("/dev/null", "akhostmgmt", "no-folder", [](int, const char* text, const char*) {
        arkeon::Console::standard().writeError(std::string("logged: ") + text + "\n");
        return 0;
    });
    const std::string login =
        "Authorization failed. A web login is required. Run the 'akauth -login -loginType "
        "WEB|APIKEY' command to login.\n";
    const std::string expired = std::string(getECMessage(118)) + "\n";
    EXPECT_EQ(
        printedBy([&] { reportStatus(118, log); }).err,
        "logged: " + login + login + "logged: " + expired + "Exit Status 118: " + expired);
}

}  // namespace
