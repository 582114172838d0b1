#include "cmdframework/Runtimecmd.h"

#include "cmdframework/Messages.h"

#include <gtest/gtest.h>
#include <string>

namespace {

struct CodeAndText {
    std::uint32_t code;
    const char* text;
};

constexpr CodeAndText everyCode[] = {
    {0, "There was a problem opening the log file.  Command terminated."},
    {1, "Unknown run time error."},
    {2, "The top level command name is NULL."},
    {3, "The command parameters list is NULL."},
    {4, "The file could not be opened."},
    {5, "The passphrase could not be fetched."},
    {6, "Unknown run time error."},
    {99, "Unknown run time error."},
};

TEST(Runtimecmd, EveryCodeHasItsTextAndStatus20) {
    for (const CodeAndText& row : everyCode) {
        const CRuntimecmd failure(static_cast<runTimeExceptions>(row.code));
        EXPECT_STREQ(failure.what(), row.text) << row.code;
        EXPECT_EQ(failure.errcode(), 20);
    }
}

TEST(Runtimecmd, DetailFollowsInQuotesWithoutABlank) {
    const CRuntimecmd failure(fileNotOpened, "/tmp/x");
    EXPECT_STREQ(failure.what(), "The file could not be opened.\"/tmp/x\"\n");
    EXPECT_EQ(failure.errcode(), 20);
}

TEST(Runtimecmd, StatusWithoutItsTextStandsInParentheses) {
    const CRuntimecmd failure(logNotOpened, 13, false);
    EXPECT_STREQ(
        failure.what(), "There was a problem opening the log file.  Command terminated. (13)");
    EXPECT_EQ(failure.errcode(), 13);
}

TEST(Runtimecmd, StatusWithItsTextStandsOnALineOfItsOwn) {
    const CRuntimecmd failure(returnStatusNotZero, 5, true);
    EXPECT_EQ(failure.what(), std::string("Unknown run time error.\n") + getECMessage(5) + " (5)");
    EXPECT_EQ(failure.errcode(), 5);
}

TEST(Runtimecmd, DetailFollowsTheStatusText) {
    const CRuntimecmd failure(fileNotOpened, "p", 104, true);
    EXPECT_EQ(
        failure.what(),
        std::string("The file could not be opened.\n") + getECMessage(104) + " (104) \"p\"\n");
    EXPECT_EQ(failure.errcode(), 104);
}

TEST(Runtimecmd, DetailStandsBeforeABareStatus) {
    const CRuntimecmd failure(fileNotOpened, "p", -7, false);
    EXPECT_STREQ(failure.what(), "The file could not be opened.\"p\"\n (-7)");
    EXPECT_EQ(failure.errcode(), -7);
}

TEST(Runtimecmd, LongTextIsCutSilentlyAt1023Bytes) {
    const std::string detail(3000, 'x');
    EXPECT_EQ(std::string(CRuntimecmd(fileNotOpened, detail.c_str()).what()).size(), 1023U);
    EXPECT_EQ(
        std::string(CRuntimecmd(fileNotOpened, detail.c_str(), 104, true).what()).size(), 1023U);
}

TEST(Runtimecmd, EachFormOfMessageHasABufferOfItsOwn) {
    const CRuntimecmd failure(unknownRunTimeError);
    const char* plain = failure.message(commandNameIsNull);
    const char* detailed = failure.message(commandNameIsNull, "d");
    const char* withStatus = failure.message(parametersAreNull, 20);
    EXPECT_STREQ(detailed, "The top level command name is NULL.\"d\"\n");
    EXPECT_EQ(
        withStatus,
        std::string("The command parameters list is NULL.\n") + getECMessage(20) + " (20)");
    EXPECT_NE(plain, detailed);
    EXPECT_NE(detailed, withStatus);
    EXPECT_EQ(plain, failure.message(fileNotOpened)) << "the next call uses the same buffer";
    EXPECT_STREQ(plain, "The file could not be opened.");
}

}  // namespace
