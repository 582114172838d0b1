#include "devserver/MediaType.h"

#include <gtest/gtest.h>

namespace {

using namespace devserver::mediaTypes;

TEST(MediaType, AcceptLetsOursPass) {
    for (const char* header :
         {"", "application/vnd.arkeon+json;version=6.0", "application/vnd.arkeon+json",
          "APPLICATION/VND.ARKEON+JSON; Version=\"6.0\"", "*/*", "application/*",
          "text/html, application/vnd.arkeon+json;version=6.0;q=0.1", "text/html,*/*;q=0.5"}) {
        EXPECT_TRUE(accepts(header)) << header;
    }
    for (const char* header :
         {"application/json", "text/html", "application/vnd.arkeon+json;version=5.0",
          "application/vnd.arkeon+json;version=6", "*/*;q=0", "text/*",
          "application/vnd.arkeon+json;q=0.0"}) {
        EXPECT_FALSE(accepts(header)) << header;
    }
}

TEST(MediaType, ContentTypeMustBeOurs) {
    EXPECT_TRUE(isOurs("application/vnd.arkeon+json;version=6.0"));
    EXPECT_TRUE(isOurs("application/vnd.arkeon+json"));
    for (const char* header :
         {"", "application/json", "*/*", "application/vnd.arkeon+json;version=4.0"}) {
        EXPECT_FALSE(isOurs(header)) << header;
    }
}

TEST(MediaType, GzipMustBeAskedFor) {
    EXPECT_TRUE(acceptsGzip("gzip"));
    EXPECT_TRUE(acceptsGzip("deflate, gzip;q=0.5, br"));
    EXPECT_FALSE(acceptsGzip(""));
    EXPECT_FALSE(acceptsGzip("deflate, br"));
    EXPECT_FALSE(acceptsGzip("gzip;q=0"));
}

}  // namespace
