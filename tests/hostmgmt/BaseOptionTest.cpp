#include "support/Streams.h"
#include "support/TestOperation.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {

using Lines = std::vector<std::string>;

TEST(BaseOption, AFreshPayloadIsAnEmptyObject) {
    EXPECT_EQ(TestOperation().operation.getJSONpayload(), "{}");
}

TEST(BaseOption, MembersAreSetAndReplaced) {
    TestOperation test;
    EXPECT_EQ(test.operation.setJSONObject("hostName", "one"), 0);
    EXPECT_EQ(test.operation.setJSONObject("isShared", json_true()), 0);
    EXPECT_EQ(test.operation.getJSONpayload(), R"({"hostName":"one","isShared":true})");
    EXPECT_EQ(test.operation.setJSONObject("hostName", "tw\"o\n"), 0);
    EXPECT_EQ(test.operation.getJSONpayload(), R"({"hostName":"tw\"o\n","isShared":true})");
}

TEST(BaseOption, ATextThatIsNotUtf8IsRejectedWithItsKey) {
    TestOperation test;
    try {
        test.operation.setJSONObject("hostName", "caf\xe9");
        FAIL() << "accepted";
    } catch (const CUsagecmd& failure) {
        EXPECT_STREQ(failure.what(), "Invalid value supplied for option\nhostName");
    }
    EXPECT_EQ(test.operation.getJSONpayload(), "{}");
}

TEST(BaseOption, WithoutMemoryThereIsNoPayload) {
    TestOperation test;
    json_set_alloc_funcs([](std::size_t) -> void* { return nullptr; }, std::free);
    EXPECT_THROW(TestOperation(), std::bad_alloc);
    EXPECT_THROW(test.operation.getJSONpayload(), std::bad_alloc);
    json_set_alloc_funcs(std::malloc, std::free);
}

TEST(BaseOption, LoadJSONReplacesThePayload) {
    TestOperation test;
    test.operation.setJSONObject("old", "member");
    EXPECT_EQ(test.operation.loadJSON(R"({ "new" : 1 })"), 0);
    EXPECT_EQ(test.operation.getJSONpayload(), R"({"new":1})");
}

TEST(BaseOption, AnUnreadableReplyGives7610AndLeavesNoPayload) {
    for (const std::string text : {"", "{", "nothing", "3", "{\"a\":1}x", "\xff"}) {
        TestOperation test;
        EXPECT_EQ(test.operation.loadJSON(text.c_str()), 7610) << text;
        EXPECT_FALSE(test.operation.hasPayload());
        EXPECT_EQ(test.operation.getJSONpayload(), "");
        EXPECT_EQ(LogLines::lines(), Lines{"16 load_json() failed:" + text + "\n"});
        long code = 5;
        EXPECT_EQ(test.operation.getIntValue("errorCode", code), 7610);
        EXPECT_EQ(code, 5);
        EXPECT_TRUE(TestOperation::logged("16 No error code in response."));
    }
}

TEST(BaseOption, TheLastOfTwoEqualMembersOfAReplyCounts) {
    TestOperation test;
    EXPECT_EQ(test.operation.loadJSON(R"({"a":1,"a":2})"), 0);
    EXPECT_EQ(test.operation.getJSONpayload(), R"({"a":2})");
}

TEST(BaseOption, ANulDoesNotEndAReply) {
    const LogLines lines;
    JsonPayload payload(lines.log);
    EXPECT_EQ(payload.load(std::string("{}\0x", 4)), 7610);
    EXPECT_FALSE(payload);
    EXPECT_EQ(payload.load("{}"), 0);
    EXPECT_TRUE(payload);
}

TEST(BaseOption, IntegersAreReadOrLeftUntouched) {
    TestOperation test;
    ASSERT_EQ(
        test.operation.loadJSON(R"({"n":-12,"big":5000000000,"text":"5","real":5.0,"null":null})"),
        0);
    long value = 1;
    EXPECT_EQ(test.operation.getIntValue("n", value), 0);
    EXPECT_EQ(value, -12);
    EXPECT_EQ(test.operation.getIntValue("big", value), 0);
    EXPECT_EQ(value, 5000000000L);
    EXPECT_TRUE(LogLines::lines().empty());
    for (const char* key : {"absent", "text", "real", "null"}) {
        EXPECT_EQ(test.operation.getIntValue(key, value), 7610) << key;
        EXPECT_EQ(value, 5000000000L);
        EXPECT_EQ(LogLines::lines().back(), "16 No error code in response.");
    }
}

TEST(BaseOption, TextsAreReadOrLeftUntouchedWithTheSameLogLine) {
    TestOperation test;
    ASSERT_EQ(test.operation.loadJSON(R"({"s":"text","n":1,"null":null})"), 0);
    std::string value = "before";
    for (const char* key : {"absent", "n", "null"}) {
        EXPECT_EQ(test.operation.getStringValue(key, value), 7610) << key;
        EXPECT_EQ(value, "before");
        EXPECT_EQ(LogLines::lines().back(), "16 No error code in response.");
    }
    EXPECT_EQ(test.operation.getStringValue("s", value), 0);
    EXPECT_EQ(value, "text");
}

TEST(BaseOption, GetURILogsTheUri) {
    TestOperation test;
    EXPECT_EQ(test.operation.getURI(OP_COMMENT, "ID", "x"), "arkeon/config/hosts/ID/comment");
    EXPECT_EQ(LogLines::lines(), Lines{"2 serverUri is: arkeon/config/hosts/ID/comment"});
}

TEST(BaseOption, AnOptionIsReadUnderItsNameElseUnderItsAlias) {
    const CArgscmd byAlias = parsed({"-I", "alias"});
    EXPECT_TRUE(isGiven(byAlias, option::hostid));
    EXPECT_EQ(valueOf(byAlias, option::hostid), "alias");
    const CArgscmd both = parsed({"-i", "alias", "-hostid", "name"});
    EXPECT_EQ(valueOf(both, option::hostid), "name");
    const CArgscmd neither = parsed({});
    EXPECT_FALSE(isGiven(neither, option::hostid));
    EXPECT_EQ(valueOf(neither, option::hostid), "");
}

TEST(BaseOption, DestroyingAnOperationTakesTheLogsUseCountBelowZero) {
    LogLines lines;
    EXPECT_EQ(CLogcmd::use_count, 1U);
    {
        const BareOperation operation({}, lines.log);
        EXPECT_EQ(CLogcmd::use_count, 1U) << "its logs leave the count alone";
    }
    EXPECT_EQ(CLogcmd::use_count, 4294967295U) << "and each lowers it at its end";
}

}  // namespace
