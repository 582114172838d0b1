#include "driver/ArgumentCopy.h"

#include "support/CommandLine.h"

#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>

namespace {

char* failFor(const char* text) {
    return std::strcmp(text, "fail") == 0 ? nullptr : strdup(text);
}

TEST(ArgumentCopy, TheCopyIsWholeAndTheOriginalUntouched) {
    CommandLine line({"prog", "-list", ""});
    char** copy = copyArguments(line.argc(), line.argv(), strdup);
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy[0], "prog");
    EXPECT_STREQ(copy[1], "-list");
    EXPECT_STREQ(copy[2], "");
    EXPECT_EQ(copy[3], nullptr);
    EXPECT_NE(copy[1], line.argv()[1]);
    const CArgscmd args(3, copy);
    EXPECT_STREQ(copy[1], "list");
    EXPECT_STREQ(line.argv()[1], "-list");
}

TEST(ArgumentCopy, ADuplicationThatFailsLeavesNothingBehind) {
    for (const std::vector<std::string>& words : {
             std::vector<std::string>{"fail"},
             {"prog", "fail"},
             {"prog", "-list", "fail", "x"},
         }) {
        CommandLine line(words);
        EXPECT_EQ(copyArguments(line.argc(), line.argv(), failFor), nullptr);
    }
}

// Where the sanitizers have the memory, mallinfo2 sees none of it, and they look for leaks
// themselves.
TEST(ArgumentCopy, ADuplicationThatFailsGivesAllMemoryBack) {
    // Small pieces count as used after their release too: neither the texts nor their table is one.
    std::vector<std::string> words(200, std::string(3000, 'w'));
    words.emplace_back("fail");
    CommandLine line(words);
    const std::size_t before = mallinfo2().uordblks;
    copyArguments(line.argc(), line.argv(), failFor);
    EXPECT_EQ(mallinfo2().uordblks, before);
}

TEST(ArgumentCopy, NoArgumentsAtAll) {
    char* none[] = {nullptr};
    char** copy = copyArguments(0, none, failFor);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy[0], nullptr);
}

}  // namespace
