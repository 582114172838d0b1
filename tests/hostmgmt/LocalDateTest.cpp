#include "hostmgmt/listing/LocalDate.h"

#include "support/Environment.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

namespace {

std::string dateText(std::int64_t milliseconds) {
    return localDateText(milliseconds).data();
}

TEST(LocalDate, IsLocalAndDropsPartsOfASecond) {
    const support::ScopedVariable zone("TZ", "EST5");
    EXPECT_EQ(dateText(0), "Dec 31, 1969 07:00:00 PM");
    EXPECT_EQ(dateText(1795248930999), "Nov 21, 2026 03:15:30 AM");
    EXPECT_EQ(dateText(-999), "Dec 31, 1969 07:00:00 PM") << "towards zero";
    EXPECT_EQ(dateText(-1000), "Dec 31, 1969 06:59:59 PM");
    EXPECT_EQ(dateText(43200000), "Jan 01, 1970 07:00:00 AM");
    EXPECT_EQ(dateText(61200000), "Jan 01, 1970 12:00:00 PM");
    EXPECT_EQ(dateText(18000000), "Jan 01, 1970 12:00:00 AM");
}

TEST(LocalDate, AYearOfFiveDigitsIsShown) {
    const support::ScopedVariable zone("TZ", "UTC0");
    EXPECT_EQ(dateText(253402300799000), "Dec 31, 9999 11:59:59 PM");
    EXPECT_EQ(dateText(253402300800000), "Jan 01, 10000 12:00:00 AM");
    EXPECT_NE(dateText(std::numeric_limits<std::int64_t>::max()), "") << "the year 292278994";
    EXPECT_NE(dateText(std::numeric_limits<std::int64_t>::min()), "");
}

TEST(LocalDate, AYearBeforeTheCalendarsIsShown) {
    const support::ScopedVariable zone("TZ", "UTC0");
    EXPECT_EQ(dateText(-62135596800000), "Jan 01, 1 12:00:00 AM");
    EXPECT_EQ(dateText(-62135596801000), "Dec 31, 0 11:59:59 PM");
}

std::string byTheLibrary(std::time_t seconds) {
    std::tm local{};
    char text[100] = "";
    if (localtime_r(&seconds, &local) != nullptr) {
        std::strftime(text, sizeof text, "%b %d, %Y %I:%M:%S %p", &local);
    }
    return text;
}

/// Whether a date is what the C library says; reports it where it is not.
bool isRight(std::int64_t seconds) {
    const std::string expected = byTheLibrary(seconds);
    const std::string found = dateText(seconds * 1000);
    if (found != expected) {
        std::fprintf(
            stderr, "%lld: %s, not %s\n", static_cast<long long>(seconds), found.c_str(),
            expected.c_str());
    }
    return found == expected;
}

/// A moment of each fifth hour of the years in which zones changed their offsets most, and moments
/// of all times.
bool allAreRight() {
    constexpr std::int64_t from = -2'208'988'800;  // 1900
    constexpr std::int64_t to = 2'240'524'800;     // 2041
    bool right = true;
    for (std::int64_t seconds = from; seconds < to; seconds += 5 * 3'600 - 1) {
        right = isRight(seconds) && right;
    }
    std::mt19937_64 random(20261121);
    std::uniform_int_distribution<std::int64_t> anyTime(-40'000'000'000, 300'000'000'000);
    for (int i = 0; i < 100'000; ++i) {
        right = isRight(anyTime(random)) && right;
    }
    return right;
}

class LocalDateZone : public testing::TestWithParam<const char*> {};

TEST(LocalDate, TheYearIsTheLibrarysFarInTheWestToo) {
    const support::ScopedVariable zone("TZ", "WEST24:59:59");
    EXPECT_EQ(dateText(-30610137600000), byTheLibrary(-30610137600));
}

TEST(LocalDate, TheYearIsTheLibrarysFarInTheEastToo) {
    const support::ScopedVariable zone("TZ", "EAST-24:59:59");
    EXPECT_EQ(dateText(253402214399000), byTheLibrary(253402214399));
}

TEST(LocalDate, AnOffsetThatChangesAtMidnightUtcCountsFromThatSecond) {
    const support::ScopedVariable zone("TZ", "AAA0BBB,J60/0,J300/0");
    EXPECT_EQ(dateText(1772323199000), "Feb 28, 2026 11:59:59 PM");
    EXPECT_EQ(dateText(1772323200000), "Mar 01, 2026 01:00:00 AM");
}

TEST(LocalDate, AnOffsetThatChangedAtMidnightUtcBefore1970CountsFromThatSecond) {
    const support::ScopedVariable zone("TZ", "Europe/Lisbon");
    EXPECT_EQ(dateText(-1830384001000), "Dec 31, 1911 11:23:14 PM");
    EXPECT_EQ(dateText(-1830384000000), "Jan 01, 1912 12:00:00 AM");
}

/// In a process of its own, which asks for no other zone.
TEST_P(LocalDateZone, IsWhatTheLibrarySays) {
    EXPECT_EXIT(
        {
            setenv("TZ", GetParam(), 1);
            tzset();
            std::_Exit(allAreRight() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

// Half an hour of summer time, a day left out, 27 leap seconds, odd offsets and none at all.
INSTANTIATE_TEST_SUITE_P(
    Zones, LocalDateZone,
    testing::Values(
        "UTC0", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe",
        "Pacific/Apia", "Africa/Monrovia", "America/St_Johns", "right/Europe/Berlin",
        ":/not/there"));

}  // namespace
