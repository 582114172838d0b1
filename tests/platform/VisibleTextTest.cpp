#include "arkeon/console.h"

#include <gtest/gtest.h>

using arkeon::visibleText;

namespace {

TEST(VisibleText, PrintableTextStaysAsItIs) {
    for (const char* text :
         {"", "abc ~", "a\nb\tc\n", "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", "\xc2\xa0",
          "^[\\x9b"}) {
        EXPECT_EQ(visibleText(text), text);
    }
}

TEST(VisibleText, ControlsOfC0AndDelAreShownByTheirKeys) {
    EXPECT_EQ(visibleText("\x1b[2Jx"), "^[[2Jx");
    EXPECT_EQ(visibleText("a\rb\x07\x08"), "a^Mb^G^H");
    EXPECT_EQ(visibleText("\x7f"), "^?");
    EXPECT_EQ(visibleText(std::string_view("a\0b", 3)), "a^@b");
    EXPECT_EQ(visibleText("\x1f"), "^_");
}

TEST(VisibleText, ControlsOfC1AreShownByTheirCode) {
    EXPECT_EQ(
        visibleText("\xc2\x9b"
                    "31m"),
        "\\x9b31m");
    EXPECT_EQ(visibleText("\xc2\x80\xc2\x9f"), "\\x80\\x9f");
}

TEST(VisibleText, BytesThatAreNotUtf8AreShownInHex) {
    EXPECT_EQ(
        visibleText("\x9b"
                    "31m"),
        "\\x9b31m");
    EXPECT_EQ(visibleText("a\xff\xc3"), "a\\xff\\xc3");
    EXPECT_EQ(visibleText("\xe2\x82z"), "\\xe2\\x82z");
    EXPECT_EQ(visibleText("\xc0\x9b"), "\\xc0\\x9b");
    EXPECT_EQ(visibleText("\xed\xa0\x80"), "\\xed\\xa0\\x80");
}

/// No byte alone reaches the terminal unless it is printable, a newline or a tab.
TEST(VisibleText, EverySingleByte) {
    for (int byte = 0; byte < 256; ++byte) {
        const char letter = static_cast<char>(byte);
        for (const char shown : visibleText(std::string_view(&letter, 1))) {
            const bool harmless = (shown >= ' ' && shown <= '~') || shown == '\n' || shown == '\t';
            EXPECT_TRUE(harmless) << byte;
        }
    }
}

}  // namespace
