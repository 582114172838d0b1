#include "cmdframework/Usagecmd.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

struct CodeAndText {
    std::uint32_t code;
    const char* text;
};

constexpr CodeAndText everyCode[] = {
    {0, "An invalid option was used."},
    {1, "Missing the command option from the arguments list."},
    {2, "Missing option character on parameter."},
    {3, "The following option is required and was not specified:"},
    {4, "There is no value associated with the command option"},
    {5, "Help requested."},
    {6, "The following option was entered more than once:"},
    {7, "The following option requires an unsigned integer value or the number entered was too "
        "large:"},
    {8, "The value for this option was missing:"},
    {9, "This option was given a value but does not use one."},
    {10, "Invalid value supplied for option"},
    {11, "Either parameter name or alias of the following option required:"},
    {12, "Unknown usage error."},
    {13, "Please select exactly one of these options:"},
    {14, "Either (null) or (null) is required and was not specified"},
    {15, "Mapping name must not contain slashes ('/' or '\\')"},
    {16, "The value for the following parameter is too long."},
    {17, "Unknown usage error."},
    {4000000000U, "Unknown usage error."},
};

usageExceptions codeOf(std::uint32_t number) {
    return static_cast<usageExceptions>(number);
}

TEST(Usagecmd, EveryCodeHasItsText) {
    for (const CodeAndText& row : everyCode) {
        EXPECT_STREQ(CUsagecmd(codeOf(row.code)).what(), row.text) << row.code;
    }
}

TEST(Usagecmd, CodesAboveTheFallbackAreFoundBecauseTheyStandBeforeIt) {
    EXPECT_STRNE(CUsagecmd(valueTooLong).what(), CUsagecmd(unknownUsageError).what());
    EXPECT_STRNE(CUsagecmd(selectExactlyOne).what(), CUsagecmd(unknownUsageError).what());
}

TEST(Usagecmd, DetailStandsOnALineOfItsOwn) {
    EXPECT_STREQ(
        CUsagecmd(optionRepeated, "server").what(),
        "The following option was entered more than once:\nserver");
}

TEST(Usagecmd, ListIsJoinedWithCommas) {
    const char* list[] = {"l", "j", "jc", nullptr};
    EXPECT_STREQ(
        CUsagecmd(selectExactlyOne, list).what(),
        "Please select exactly one of these options:\nl, j, jc");
}

TEST(Usagecmd, EmptyListLeavesALoneNewline) {
    const char* list[] = {nullptr};
    EXPECT_STREQ(
        CUsagecmd(selectExactlyOne, list).what(), "Please select exactly one of these options:\n");
}

TEST(Usagecmd, LimitIsExclusiveSoOneLessIsShown) {
    EXPECT_STREQ(
        CUsagecmd(valueTooLong, "comment", 2048).what(),
        "The value for the following parameter is too long.\ncomment\nThe maximum value is 2047\n");
}

TEST(Usagecmd, LongDetailIsCutSilentlyAt1023Bytes) {
    const std::string detail(5000, 'x');
    const std::string text = CUsagecmd(optionRepeated, detail.c_str()).what();
    EXPECT_EQ(text.size(), 1023U);
    EXPECT_EQ(text.substr(0, 52), "The following option was entered more than once:\nxxx");
}

TEST(Usagecmd, LimitLineIsCutSilentlyToo) {
    const std::string detail(960, 'x');
    const std::string text = CUsagecmd(valueTooLong, detail.c_str(), 7).what();
    EXPECT_EQ(text.size(), 1023U);
    EXPECT_EQ(text.substr(1011), "\nThe maximum");
}

TEST(Usagecmd, SetUsagemessageReplacesTheWholeText) {
    CUsagecmd failure(eitherIsRequired);
    failure.SetUsagemessage("Either a or b");
    EXPECT_STREQ(failure.what(), "Either a or b");
    failure.SetUsagemessage(std::string(2000, 'y').c_str());
    EXPECT_EQ(std::string(failure.what()), std::string(1023, 'y'));
    failure.SetUsagemessage("");
    EXPECT_STREQ(failure.what(), "");
}

TEST(Usagecmd, MessageFillsTheCallersBuffer) {
    const CUsagecmd failure(helpRequested);
    std::array<char, 30> buffer{};
    failure.message(buffer.data(), buffer.size(), valueMissing);
    EXPECT_STREQ(buffer.data(), "The value for this option was");
    std::array<char, 64> larger{};
    failure.message(larger.data(), larger.size(), helpRequested, "d");
    EXPECT_STREQ(larger.data(), "Help requested.\nd");
}

TEST(Usagecmd, TextSurvivesCopying) {
    const CUsagecmd original(optionRepeated, "s");
    const CUsagecmd copy = original;
    EXPECT_STREQ(copy.what(), original.what());
    EXPECT_NE(copy.what(), original.what()) << "each has a buffer of its own";
}

}  // namespace
