#include "arkeon/text.h"

#include "support/Environment.h"
#include "text/ServerNames.h"
#include "text/Utf8.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>

using arkeon::baseName;
using arkeon::boundedAppend;
using arkeon::boundedCopy;
using arkeon::boundedFormat;
using arkeon::cutText;
using arkeon::isUtf8;
using arkeon::localTime;
using arkeon::sameServer;

namespace {

TEST(BoundedCopy, CopiesWhatFits) {
    std::array<char, 6> buffer{};
    EXPECT_EQ(boundedCopy(buffer.data(), buffer.size(), "abc"), 3U);
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_EQ(boundedCopy(buffer.data(), buffer.size(), "abcde"), 5U);
    EXPECT_STREQ(buffer.data(), "abcde");
}

TEST(BoundedCopy, CutsAndTerminates) {
    std::array<char, 4> buffer{'x', 'x', 'x', 'x'};
    EXPECT_EQ(boundedCopy(buffer.data(), buffer.size(), "abcdef"), 3U);
    EXPECT_STREQ(buffer.data(), "abc");
}

TEST(BoundedCopy, DoesNotSplitALetter) {
    std::array<char, 4> buffer{};
    EXPECT_EQ(boundedCopy(buffer.data(), buffer.size(), "ab\xc3\xa4"), 2U);
    EXPECT_STREQ(buffer.data(), "ab");
}

TEST(BoundedCopy, SizeOneHoldsTheEmptyTextAndSizeZeroNothing) {
    char one = 'x';
    EXPECT_EQ(boundedCopy(&one, 1, "abc"), 0U);
    EXPECT_EQ(one, '\0');
    char untouched = 'x';
    EXPECT_EQ(boundedCopy(&untouched, 0, "abc"), 0U);
    EXPECT_EQ(untouched, 'x');
}

TEST(BoundedCopy, SourceMayOverlapTheBuffer) {
    std::array<char, 7> buffer{'a', 'b', 'c', 'd', 'e', 'f', '\0'};
    boundedCopy(buffer.data(), buffer.size(), std::string_view(buffer.data() + 2, 4));
    EXPECT_STREQ(buffer.data(), "cdef");
}

TEST(BoundedAppend, AppendsWhatFits) {
    std::array<char, 6> buffer{"ab"};
    EXPECT_EQ(boundedAppend(buffer.data(), buffer.size(), "cd"), 4U);
    EXPECT_STREQ(buffer.data(), "abcd");
    EXPECT_EQ(boundedAppend(buffer.data(), buffer.size(), "efgh"), 5U);
    EXPECT_STREQ(buffer.data(), "abcde");
    EXPECT_EQ(boundedAppend(buffer.data(), buffer.size(), "i"), 5U);
    EXPECT_STREQ(buffer.data(), "abcde");
}

TEST(BoundedAppend, UnterminatedBufferIsTerminated) {
    std::array<char, 3> buffer{'a', 'b', 'c'};
    EXPECT_EQ(boundedAppend(buffer.data(), buffer.size(), "d"), 2U);
    EXPECT_STREQ(buffer.data(), "ab");
    EXPECT_EQ(boundedAppend(buffer.data(), 0, "d"), 0U);
}

TEST(BoundedFormat, FormatsWhatFits) {
    std::array<char, 16> buffer{};
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "%s (%d)", "text", 12), 9U);
    EXPECT_STREQ(buffer.data(), "text (12)");
}

TEST(BoundedFormat, EmptyTextIsNoFailure) {
    std::array<char, 4> buffer{"abc"};
    errno = ENOMEM;  // of something before
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "%s", ""), 0U);
    EXPECT_STREQ(buffer.data(), "");
}

TEST(BoundedFormat, CutsAndTerminates) {
    std::array<char, 5> buffer{};
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "%s-%s", "abc", "def"), 4U);
    EXPECT_STREQ(buffer.data(), "abc-");
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "%d", 12345), 4U);
    EXPECT_STREQ(buffer.data(), "1234");
}

TEST(BoundedFormat, DoesNotSplitALetter) {
    std::array<char, 6> buffer{};
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "abc%s", "\xe2\x82\xac!"), 3U);
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "ab%s", "\xe2\x82\xac!"), 5U);
    EXPECT_STREQ(buffer.data(), "ab\xe2\x82\xac");
    for (const char* text : {"abcd\xf0\x9f\x98\x80", "abcd\xf0\x9f\x98\x80z"}) {
        EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "%s", text), 4U);
        EXPECT_STREQ(buffer.data(), "abcd");
    }
}

TEST(BoundedFormat, BytesThatAreNoLetterAreCutAtTheLimit) {
    std::array<char, 4> buffer{};
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "ab%s", "\xe9t\xe9"), 3U);
    EXPECT_STREQ(buffer.data(), "ab\xe9");
}

TEST(BoundedFormat, SizeZeroWritesNothing) {
    char untouched = 'x';
    EXPECT_EQ(boundedFormat(&untouched, 0, "%s", "abc"), 0U);
    EXPECT_EQ(untouched, 'x');
}

TEST(BoundedFormat, SizeOneHoldsTheTerminator) {
    char only = 'x';
    EXPECT_EQ(boundedFormat(&only, 1, "%s", "abc"), 0U);
    EXPECT_EQ(only, '\0');
}

TEST(BoundedFormat, TextThatCannotBeFormattedIsEmpty) {
    std::array<char, 8> buffer{'x'};
    // The C locale has no bytes for this letter (printf: EILSEQ).
    EXPECT_EQ(boundedFormat(buffer.data(), buffer.size(), "abc%lc", wint_t{0x20AC}), 0U);
    EXPECT_STREQ(buffer.data(), "");
}

TEST(CutText, EndsBetweenTwoLetters) {
    const std::string text = "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80z";
    const std::array<std::size_t, 12> lengths{0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
    for (std::size_t limit = 0; limit < lengths.size(); ++limit) {
        EXPECT_EQ(cutText(text, limit).size(), lengths.at(limit)) << limit;
    }
}

TEST(CutText, TextThatFitsStaysWhole) {
    EXPECT_EQ(cutText("abc", 3), "abc");
    EXPECT_EQ(cutText("abc", 100), "abc");
    EXPECT_EQ(cutText("", 0), "");
}

TEST(CutText, AFirstLetterThatDoesNotFitLeavesNothing) {
    for (std::size_t limit = 0; limit < 3; ++limit) {
        EXPECT_EQ(cutText("\xe2\x82\xac", limit), "");
    }
}

TEST(CutText, TextThatIsNotUtf8IsCutAtTheLimit) {
    EXPECT_EQ(cutText("\x80\x81\x82\x83\x84", 4), "\x80\x81\x82\x83");
    EXPECT_EQ(cutText("\xe4\xf6\xfc\xe4", 2), "\xe4\xf6");
    EXPECT_EQ(cutText("\x80\x80\x80\x80\x80\x80", 5), "\x80\x80\x80\x80\x80");
    EXPECT_EQ(cutText("ab\xc3", 2), "ab");
    EXPECT_EQ(cutText("a\xc3(b", 2), "a\xc3");
}

TEST(IsUtf8, WellFormedTexts) {
    for (const char* text :
         {"", "abc", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xec\x80\x80", "\xed\x9f\xbf",
          "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf3\x80\x80\x80",
          "\xf4\x8f\xbf\xbf", "a\xc3\xa4z"}) {
        EXPECT_TRUE(isUtf8(text)) << text;
    }
    EXPECT_TRUE(isUtf8(std::string_view("a\0b", 3)));
}

TEST(IsUtf8, IllFormedTexts) {
    for (const char* text :
         {"\x80",
          "\xbf",
          "\xc0\x80",
          "\xc1\xbf",
          "\xc2",
          "\xc2\x7f",
          "\xc2\xc0",
          "\xe0\x9f\xbf",
          "\xe0\xa0",
          "\xe1\x80\x7f",
          "\xe1\x80\xc0",
          "\xed\xa0\x80",
          "\xed\xbf\xbf",
          "\xf0\x8f\xbf\xbf",
          "\xf1\x80\x80",
          "\xf1\x80\x80\xc0",
          "\xf4\x90\x80\x80",
          "\xf5\x80\x80\x80",
          "\xff",
          "abc\xe4"}) {
        EXPECT_FALSE(isUtf8(text)) << text;
    }
}

TEST(BaseName, IsTheLastComponent) {
    const std::array<std::pair<const char*, const char*>, 5> cases{
        {{"/usr/bin/tool", "tool"}, {"tool", "tool"}, {"./tool", "tool"}, {"bin/", ""}, {"", ""}}};
    for (const auto& [path, base] : cases) {
        const std::unique_ptr<char, decltype(&std::free)> name(baseName(path), std::free);
        EXPECT_STREQ(name.get(), base);
    }
    EXPECT_EQ(baseName(nullptr), nullptr);
}

TEST(LocalTime, FollowsTheZone) {
    const support::ScopedVariable zone("TZ", "EET-2");
    tzset();
    std::tm local{};
    ASSERT_TRUE(localTime(1'000'000'000, &local));
    EXPECT_EQ(local.tm_year, 101);
    EXPECT_EQ(local.tm_mon, 8);
    EXPECT_EQ(local.tm_mday, 9);
    EXPECT_EQ(local.tm_hour, 3);
    EXPECT_EQ(local.tm_min, 46);
    EXPECT_EQ(local.tm_sec, 40);
    EXPECT_EQ(local.tm_gmtoff, 7200);
}

TEST(LocalTime, YearThatDoesNotFitGivesZeroes) {
    std::tm local{};
    local.tm_year = 99;
    EXPECT_FALSE(localTime(std::numeric_limits<std::time_t>::max(), &local));
    EXPECT_EQ(local.tm_year, 0);
    EXPECT_EQ(local.tm_mday, 0);
}

TEST(SameServer, LetterCaseAndBracketsDoNotCount) {
    EXPECT_TRUE(sameServer("Primary.Example.COM", "primary.example.com"));
    EXPECT_TRUE(sameServer("[::1]", "::1"));
    EXPECT_TRUE(sameServer("[]", ""));
    EXPECT_TRUE(sameServer("FE80::A", "[fe80::a]"));
    EXPECT_TRUE(sameServer("AZ", "az"));
    EXPECT_TRUE(sameServer("", ""));
}

TEST(SameServer, OtherDifferencesCount) {
    EXPECT_FALSE(sameServer("a", "b"));
    EXPECT_FALSE(sameServer("a", "ab"));
    EXPECT_FALSE(sameServer("a@", "A`"));
    EXPECT_FALSE(sameServer("a[", "a{"));
    EXPECT_FALSE(sameServer("[::1", "::1"));
    EXPECT_FALSE(sameServer("x::1]", "::1"));
    EXPECT_FALSE(sameServer("[", "]"));
    EXPECT_FALSE(sameServer("[", ""));
    EXPECT_FALSE(sameServer("]", ""));
}

}  // namespace
