#include "devserver/HostRecord.h"

#include <gtest/gtest.h>

namespace {

using namespace devserver;

std::string jsonOf(std::string_view text) {
    std::string json;
    appendJsonText(json, text);
    return json;
}

TEST(HostRecord, TextsAreEscaped) {
    EXPECT_EQ(jsonOf(""), "\"\"");
    EXPECT_EQ(jsonOf("a\"b\\c/d"), "\"a\\\"b\\\\c/d\"");
    EXPECT_EQ(jsonOf("\n\r\t\b\x1b\x7f"), "\"\\n\\r\\t\\u0008\\u001b\x7f\"");
    EXPECT_EQ(jsonOf(std::string_view("\0", 1)), "\"\\u0000\"");
}

TEST(HostRecord, BytesBeyondAsciiPassAsTheyAre) {
    EXPECT_EQ(jsonOf("b\xc3\xbcro \xff"), "\"b\xc3\xbcro \xff\"");
}

TEST(HostRecord, AbsentKeysAreLeftOut) {
    HostRecord host;
    std::string json;
    appendJson(json, host);
    EXPECT_EQ(json, "{\"hostMappings\":[]}");
    host.values[hostKey::hostName] = nullptr;
    host.values[hostKey::comment] = "c";
    host.values[hostKey::autoReissue] = true;
    host.values[hostKey::autoReissueDuration] = std::int64_t{-5};
    host.mappings.resize(2);
    host.mappings[1][mappingKey::name] = "n";
    json.clear();
    appendJson(json, host);
    EXPECT_EQ(
        json, "{\"hostName\":null,\"comment\":\"c\",\"autoReissue\":true,"
              "\"autoReissueDuration\":-5,\"hostMappings\":[{},{\"mappedHostName\":\"n\"}]}");
}

}  // namespace
