#include "text/ServerNames.h"

#include <gtest/gtest.h>
#include <string>

using arkeon::isServerName;
using arkeon::urlHost;

namespace {

TEST(ServerName, NamesAndAddresses) {
    const std::string label(63, 'a');
    const std::string longest = label + '.' + label + '.' + label + '.' + std::string(61, 'a');
    for (const std::string& name :
         {std::string("a"), std::string("Primary-1.example.com"), std::string("a_b.c"),
          std::string("example.com."), std::string("1a"), std::string("1.a"),
          std::string("127.0.0.1"), std::string("::1"), std::string("[::1]"),
          std::string("2001:db8::ffff:1.2.3.4"), std::string("xn--mller-kva.de"),
          std::string("0xg"), std::string("0xG"), std::string("0x-1"), label, longest,
          longest + '.'}) {
        EXPECT_TRUE(isServerName(name)) << name;
    }
}

TEST(ServerName, EverythingElse) {
    const std::string label(63, 'a');
    const std::string tooLong = label + '.' + label + '.' + label + '.' + std::string(62, 'a');
    for (const std::string& name :
         {std::string(),
          std::string("."),
          std::string(".a"),
          std::string("a.."),
          std::string("a..b"),
          std::string("a b"),
          std::string("a/b"),
          std::string("a:1"),
          std::string("a@b"),
          std::string("a?b"),
          std::string("a#b"),
          std::string("a%b"),
          std::string("a\\b"),
          std::string("a\nb"),
          std::string("a\0b", 3),
          std::string("\xc3\xa4"),
          std::string("127.1"),
          std::string("0x7f000001"),
          std::string("127.0.0.0X1"),
          std::string("0xafAF"),
          std::string("2130706433"),
          std::string("1.2.3.4.5"),
          std::string("256.0.0.1"),
          std::string("127.0.0.1."),
          std::string("[127.0.0.1]"),
          std::string("[a]"),
          std::string("[]"),
          std::string("[::1"),
          std::string("::1]"),
          std::string("[[::1]]"),
          std::string("[::1]:1"),
          std::string(":::1"),
          std::string("fe80::1%lo"),
          std::string("[::1\0]", 6),
          label + 'a',
          tooLong}) {
        EXPECT_FALSE(isServerName(name)) << name;
    }
}

TEST(UrlHost, PutsBracketsAroundIpv6AddressesOnly) {
    EXPECT_EQ(urlHost("::1"), "[::1]");
    EXPECT_EQ(urlHost("[::1]"), "[::1]");
    EXPECT_EQ(urlHost("127.0.0.1"), "127.0.0.1");
    EXPECT_EQ(urlHost("a.example"), "a.example");
}

}  // namespace
