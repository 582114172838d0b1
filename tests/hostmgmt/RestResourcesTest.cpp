#include "hostmgmt/server/RestResources.h"
#include "arkeon/media_type.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* id = "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0";

struct Row {
    int operation;
    std::string suffix;
};

TEST(RestResources, EveryOperationHasItsUri) {
    const std::string host = id;
    const Row rows[] = {
        {0, "hostmappings?mappedhostname=testhost1"},
        {1, host},
        {2, "hostmappings?isapproved=true"},
        {3, "hostmappings?isapproved=false"},
        {4, "hostmappings?isconflict=true"},
        {5, "hostmappings"},
        {6, host + "/hostmappings/testhost1"},
        {7, host + "/hostmappings/testhost1"},
        {8, host + "/hostmappings?isapproved=true"},
        {9, "hostmappings?mappedhostname=testhost1&isapproved=true"},
        {10, host + "/comment"},
        {11, host},
        {12, "testhost1"},
        {13, ""},
        {14, ""},
        {99, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(
            resourceUri(static_cast<OperationType>(row.operation), id, "testhost1"),
            "arkeon/config/hosts/" + row.suffix)
            << row.operation;
    }
}

TEST(RestResources, AddHostWithoutNameIsTheBareCollection) {
    EXPECT_EQ(resourceUri(OP_ADD_HOST, "", ""), "arkeon/config/hosts/");
}

TEST(RestResources, AHostIdIsUsedAsItIs) {
    EXPECT_EQ(resourceUri(OP_HOST, "a b%/?#", ""), "arkeon/config/hosts/a b%/?#");
}

TEST(RestResources, TheMediaTypeNamesTheVersion) {
    EXPECT_EQ(MAX_VERSION, "6.0");
    EXPECT_EQ(AK_MEDIA_TYPE_VERSION, "application/vnd.arkeon+json;version=6.0");
}

}  // namespace
