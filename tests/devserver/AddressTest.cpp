#include "devserver/Address.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using devserver::Address;
using devserver::parseAddress;
using Resource = devserver::Address::Resource;

const std::string base = "/arkeon/config/hosts";

TEST(Address, NamesEveryResource) {
    struct Row {
        const char* rest;
        Resource resource;
        const char* hostId;
        const char* mappedName;
    };
    const Row rows[] = {
        {"", Resource::hosts, "", ""},
        {"/", Resource::hosts, "", ""},
        {"/hostmappings", Resource::listing, "", ""},
        {"/ID", Resource::host, "ID", ""},
        {"/ID/comment", Resource::comment, "ID", ""},
        {"/ID/hostmappings/name", Resource::mapping, "ID", "name"},
        {"/ID/hostmappings?isapproved=true", Resource::ownMappings, "ID", ""},
    };
    for (const Row& row : rows) {
        const Address address = parseAddress(base + row.rest);
        EXPECT_EQ(address.resource, row.resource) << row.rest;
        EXPECT_EQ(address.hostId, row.hostId) << row.rest;
        EXPECT_EQ(address.mappedName, row.mappedName) << row.rest;
        EXPECT_FALSE(address.malformed) << row.rest;
    }
}

TEST(Address, EverythingElseIsUnknown) {
    for (const char* target :
         {"", "/", "*", "/arkeon/config", "/arkeon/config/hostsx", "//arkeon/config/hosts",
          "/arkeon/ping", "/ARKEON/config/hosts", "/arkeon/config/hosts/ID/",
          "/arkeon/config/hosts//", "/arkeon/config/hosts//comment",
          "/arkeon/config/hosts/ID/other", "/arkeon/config/hosts/ID/hostmappings",
          "/arkeon/config/hosts/ID/hostmappings/",
          "/arkeon/config/hosts/ID/hostmappings?isapproved=false",
          "/arkeon/config/hosts/ID/hostmappings/name/more", "/arkeon/./config/hosts"}) {
        EXPECT_EQ(parseAddress(target).resource, Resource::unknown) << target;
    }
}

TEST(Address, SegmentsAreDecodedOneByOne) {
    const Address address = parseAddress(base + "/a%2Fb/hostmappings/c%2fd%20%C3%A4+");
    EXPECT_EQ(address.resource, Resource::mapping);
    EXPECT_EQ(address.hostId, "a/b");
    EXPECT_EQ(address.mappedName, "c/d \xc3\xa4+");
}

TEST(Address, DotSegmentsAreNames) {
    for (const char* name : {".", "..", "%2e%2E"}) {
        const Address address = parseAddress(base + "/ID/hostmappings/" + name);
        EXPECT_EQ(address.resource, Resource::mapping) << name;
        EXPECT_EQ(address.hostId, "ID");
    }
    EXPECT_EQ(parseAddress(base + "/ID/hostmappings/%2e%2E").mappedName, "..");
    EXPECT_EQ(parseAddress(base + "/ID/..").resource, Resource::unknown);
}

TEST(Address, ReadsFilters) {
    const Address name =
        parseAddress(base + "/hostmappings?mappedhostname=a%26b%3D&isapproved=true");
    EXPECT_EQ(name.filter.mappedName, "a&b=");
    EXPECT_EQ(name.filter.approved, true);
    EXPECT_FALSE(name.filter.conflicting);
    EXPECT_EQ(parseAddress(base + "/hostmappings?isapproved=false").filter.approved, false);
    EXPECT_EQ(parseAddress(base + "/hostmappings?isconflict=true").filter.conflicting, true);
    EXPECT_EQ(parseAddress(base + "/hostmappings?mappedhostname=").filter.mappedName, "");
}

TEST(Address, RefusesMalformedOnes) {
    for (const char* rest :
         {"/%", "/ID/hostmappings/%zz", "/hostmappings?isapproved", "/hostmappings?isapproved=1",
          "/hostmappings?isapproved=TRUE", "/hostmappings?other=true",
          "/hostmappings?isapproved=true&", "/hostmappings?isapproved=true&isapproved=true",
          "/hostmappings?mappedhostname=%", "/ID?isapproved=true", "/ID/comment?x"}) {
        EXPECT_TRUE(parseAddress(base + rest).malformed) << rest;
    }
}

}  // namespace
