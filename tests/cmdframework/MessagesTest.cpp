#include "cmdframework/Messages.h"

#include <array>
#include <gtest/gtest.h>

namespace {

TEST(Messages, GetMessageFormatsUpToThreeStrings) {
    std::array<char, 64> buffer{};
    getMessage(buffer.data(), buffer.size(), "TestAaa0001N", "%s-%s-%s", "a", "b", "c");
    EXPECT_STREQ(buffer.data(), "a-b-c");
    getMessage(buffer.data(), buffer.size(), "TestAaa0001N", "plain", nullptr, nullptr, nullptr);
    EXPECT_STREQ(buffer.data(), "plain");
}

TEST(Messages, GetMessageFormatsANumber) {
    std::array<char, 64> buffer{};
    getMessage(buffer.data(), buffer.size(), "TestAaa0002N", "number %d.", -42);
    EXPECT_STREQ(buffer.data(), "number -42.");
}

TEST(Messages, GetMessageCutsToTheBuffer) {
    std::array<char, 6> buffer{};
    getMessage(buffer.data(), buffer.size(), "TestAaa0003N", "%s", "1234567", nullptr, nullptr);
    EXPECT_STREQ(buffer.data(), "12345");
}

TEST(Messages, StatusTextsAreNeverEmptyAndAnUnknownOneNamesItsCode) {
    EXPECT_STRNE(getECMessage(0), "");
    EXPECT_NE(std::string(getECMessage(7610)), getECMessage(8701));
    EXPECT_NE(std::string(getECMessage(123456)).find("123456"), std::string::npos);
}

TEST(Messages, OperationTextsHave8191Bytes) {
    const std::string name(10000, 'n');
    const std::string text = messageText({"TestAaa0004N", "%s is there"}, name.c_str());
    EXPECT_EQ(text, std::string(8191, 'n'));
}

}  // namespace
