#include "devserver/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace devserver::text;

TEST(Text, SplitsAtEverySeparator) {
    const std::vector<std::string_view> parts = split("/a//b", '/');
    EXPECT_EQ(parts, (std::vector<std::string_view>{"", "a", "", "b"}));
    EXPECT_EQ(split("", ',').size(), 1U);
}

TEST(Text, UndoesPercentEncoding) {
    EXPECT_EQ(percentDecoded("a%2Fb%c3%A4%00"), std::string("a/b\xc3\xa4\0", 6));
    EXPECT_EQ(percentDecoded("a+b"), "a+b");
    EXPECT_EQ(percentDecoded(""), "");
    for (const char* malformed : {"%", "%4", "%4g", "%+4", "a%", "%%41"}) {
        EXPECT_FALSE(percentDecoded(malformed)) << malformed;
    }
}

TEST(Text, PlainTextIsUtf8WithoutControls) {
    for (const char* plain : {"", "name", "b\xc3\xbcro", "\xe6\x97\xa5", "\xf0\x9f\x98\x80"}) {
        EXPECT_TRUE(isPlain(plain)) << plain;
    }
    for (const char* odd :
         {"\n", "\x1b", "\x7f", "\x80", "\xc2\x9b", "\xc0\xaf", "\xed\xa0\x80", "\xe0\x80\x80",
          "\xf0\x80\x80\x80", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xc3", "\xe6\x97"}) {
        EXPECT_FALSE(isPlain(odd)) << visible(odd);
    }
}

TEST(Text, WritesBytesAsHexadecimalDigits) {
    const std::vector<unsigned char> bytes{0x00, 0x0f, 0xa9, 0xff};
    EXPECT_EQ(hex(bytes), "000fa9ff");
    EXPECT_EQ(hex({}), "");
}

TEST(Text, ShowsWhatIsNotPlain) {
    EXPECT_EQ(visible("a\x1b[31m\n"), "a\\x1b[31m\\x0a");
    EXPECT_EQ(visible("\xc2\x9b\xff"), "\\xc2\\x9b\\xff");
    EXPECT_EQ(visible("b\xc3\xbcro"), "b\xc3\xbcro");
}

TEST(Text, NumbersHaveALimit) {
    EXPECT_EQ(number("65535", 65535), 65535U);
    EXPECT_EQ(number("0", 1), 0U);
    for (const char* wrong : {"", "65536", "-1", "+1", "1 ", "0x1", "99999999999999999999999"}) {
        EXPECT_FALSE(number(wrong, 65535)) << wrong;
    }
}

TEST(Text, LetterCaseOfAsciiDoesNotCount) {
    EXPECT_TRUE(equalIgnoringCase("TestHost-1", "tESThOST-1"));
    EXPECT_FALSE(equalIgnoringCase("testhost1", "testhost"));
    EXPECT_FALSE(equalIgnoringCase("a", "b"));
}

}  // namespace
