#include "devserver/Failure.h"
#include "devserver/Faults.h"

#include <gtest/gtest.h>

namespace {

using namespace devserver;
using namespace std::chrono_literals;

TEST(FaultRule, ReadsMethodTargetCountAndActions) {
    const FaultRule rule = parseFaultRule("PUT /arkeon/config/hosts/* x3 delay=20,status=503/8888");
    EXPECT_EQ(rule.method, "PUT");
    EXPECT_EQ(rule.pattern, "/arkeon/config/hosts/*");
    EXPECT_EQ(rule.remaining, 3U);
    EXPECT_EQ(rule.fault.delay, 20ms);
    EXPECT_EQ(rule.fault.status, 503);
    EXPECT_EQ(rule.fault.errorCode, 8888);
    EXPECT_TRUE(rule.fault.replacesReply());
}

TEST(FaultRule, ReadsEveryAction) {
    EXPECT_EQ(parseFaultRule("* * status=200").fault.status, 200);
    EXPECT_FALSE(parseFaultRule("* * status=500").fault.errorCode);
    EXPECT_EQ(
        parseFaultRule("* * status=500/9223372036854775807").fault.errorCode, 9223372036854775807);
    EXPECT_TRUE(parseFaultRule("* * html").fault.html);
    EXPECT_EQ(parseFaultRule("* * redirect=https://a/b=c").fault.redirect, "https://a/b=c");
    EXPECT_TRUE(parseFaultRule("* * endless").fault.endless);
    EXPECT_TRUE(parseFaultRule("* * drop").fault.drop);
    EXPECT_EQ(parseFaultRule("* * drip=5/7").fault.dripBytes, 5U);
    EXPECT_EQ(parseFaultRule("* * drip=5/7").fault.dripInterval, 7ms);
    EXPECT_EQ(parseFaultRule("* * cut=0").fault.cut, 0U);
    EXPECT_EQ(parseFaultRule("* * length=-4").fault.lengthChange, -4);
    EXPECT_EQ(parseFaultRule("* * length=+4").fault.lengthChange, 4);
    EXPECT_EQ(parseFaultRule("* * hostile").fault.hostile, Hostile::escapes);
    EXPECT_EQ(parseFaultRule("* * hostile=utf8").fault.hostile, Hostile::utf8);
    EXPECT_EQ(parseFaultRule("CONNECT expired").certificate, CertificateFault::expired);
    EXPECT_EQ(parseFaultRule("CONNECT x2 wrong-name").remaining, 2U);
    EXPECT_EQ(parseFaultRule("CONNECT x* untrusted").remaining, FaultRule::always);
}

TEST(FaultRule, RefusesBadOnesAndSaysWhy) {
    for (const char* text :
         {"",
          " ",
          "GET",
          "GET /",
          "GET / x2",
          "FETCH / drop",
          "GET relative drop",
          "GET /a*b drop",
          "GET / x0 drop",
          "GET / xx drop",
          "GET / 2 drop",
          "GET / drop more",
          "GET / nonsense",
          "GET / drop=1",
          "GET / delay",
          "GET / delay=",
          "GET / delay=-1",
          "GET / delay=99999999",
          "GET / status=abc",
          "GET / status=199",
          "GET / status=600",
          "GET / status=500/",
          "GET / status=500/-1",
          "GET / drip=1",
          "GET / drip=0/1",
          "GET / cut=",
          "GET / length=4",
          "GET / length=+0",
          "GET / redirect=",
          "GET / hostile=x",
          "GET / drop,",
          "CONNECT",
          "CONNECT drop",
          "CONNECT / expired",
          "get / drop"}) {
        try {
            parseFaultRule(text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            const std::string reason = failure.what();
            EXPECT_NE(reason.find("--fault '" + std::string(text) + "': "), std::string::npos)
                << reason;
            EXPECT_EQ(reason.find('\n'), std::string::npos);
        }
    }
}

TEST(FaultRule, EachRequestUsesUpTheFirstRuleThatFits) {
    Faults faults({
        parseFaultRule("PUT /a* x2 status=501"),
        parseFaultRule("* /ab status=502"),
        parseFaultRule("GET /exact status=503"),
    });
    EXPECT_EQ(faults.forRequest("PUT", "/ab")->status, 501);
    EXPECT_EQ(faults.forRequest("GET", "/ab")->status, 502);
    EXPECT_EQ(faults.forRequest("PUT", "/a")->status, 501);
    EXPECT_FALSE(faults.forRequest("PUT", "/ab"));
    EXPECT_FALSE(faults.forRequest("GET", "/exact?x"));
    EXPECT_FALSE(faults.forRequest("PUT", "/exact"));
    EXPECT_EQ(faults.forRequest("GET", "/exact")->status, 503);
    EXPECT_FALSE(faults.forRequest("GET", "/exact"));
}

TEST(FaultRule, ConnectionsAndRequestsAreCountedApart) {
    Faults faults({parseFaultRule("CONNECT x2 expired"), parseFaultRule("* * drop")});
    EXPECT_TRUE(faults.forRequest("GET", "/")->drop);
    EXPECT_EQ(faults.forConnection(), CertificateFault::expired);
    EXPECT_FALSE(faults.forRequest("GET", "/"));
    EXPECT_EQ(faults.forConnection(), CertificateFault::expired);
    EXPECT_EQ(faults.forConnection(), CertificateFault::none);
}

TEST(FaultRule, AlwaysMeansAlways) {
    Faults faults({parseFaultRule("GET * x* status=500")});
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(faults.forRequest("GET", "/anything"));
    }
}

}  // namespace
