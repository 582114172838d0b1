#include "hostmgmt/LocalDate.h"

#include "arkeon/text.h"

#include <chrono>
#include <ctime>
#include <optional>
#include <string_view>

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

constexpr const char* format = "%b %d, %Y %I:%M:%S %p";

/// What the clock on the wall shows, as if it were UTC; `time` is of a year that fits.
sys_seconds wallClock(sys_seconds time) {
    std::tm local{};
    arkeon::localTime(time.time_since_epoch().count(), &local);
    constexpr int yearZero = 1900;
    const std::chrono::year year{local.tm_year + yearZero};
    const std::chrono::month month{static_cast<unsigned>(local.tm_mon) + 1};
    const std::chrono::day day{static_cast<unsigned>(local.tm_mday)};
    return sys_days{year / month / day} + std::chrono::hours{local.tm_hour} +
           std::chrono::minutes{local.tm_min} + seconds{local.tm_sec};
}

/// How far the clock on the wall is ahead of UTC on one day; nothing for a day on which that
/// changes.
struct DayOffset {
    sys_days day = sys_days::max();
    std::optional<seconds> ahead;
};

DayOffset offsetOf(sys_days day) {
    const sys_seconds begin{day};
    const sys_seconds end = begin + days{1} - seconds{1};
    const seconds ahead = wallClock(begin) - begin;
    DayOffset offset{day, std::nullopt};
    if (ahead == wallClock(end) - end) {
        offset.ahead = ahead;
    }
    return offset;
}

/// The offsets of the days asked for last: eleven years, if they follow each other.
const DayOffset& cachedOffset(sys_days day) {
    static std::array<DayOffset, 4096> cache;
    DayOffset& entry =
        cache[static_cast<std::uint64_t>(day.time_since_epoch().count()) % cache.size()];
    if (entry.day != day) {
        entry = offsetOf(day);
    }
    return entry;
}

char* putTwoDigits(char* to, unsigned number) {
    constexpr unsigned ten = 10;
    *to++ = static_cast<char>('0' + number / ten);
    *to++ = static_cast<char>('0' + number % ten);
    return to;
}

char* put(char* to, std::string_view text) {
    return to + text.copy(to, text.size());
}

/// What strftime makes of `format`, for a year of four digits. The names are those of the C locale:
/// the tool leaves the category of times as it is at the start.
void putDate(char* to, sys_seconds wall) {
    constexpr std::string_view months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                           "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    constexpr int hundred = 100;
    constexpr unsigned noon = 12;
    const sys_days day = std::chrono::floor<days>(wall);
    const year_month_day date{day};
    const std::chrono::hh_mm_ss time{wall - day};
    const auto hour = static_cast<unsigned>(time.hours().count());
    to = put(to, months[static_cast<unsigned>(date.month()) - 1]);
    to = putTwoDigits(put(to, " "), static_cast<unsigned>(date.day()));
    to = putTwoDigits(put(to, ", "), static_cast<unsigned>(int{date.year()} / hundred));
    to = putTwoDigits(to, static_cast<unsigned>(int{date.year()} % hundred));
    to = putTwoDigits(put(to, " "), hour % noon == 0 ? noon : hour % noon);
    to = putTwoDigits(put(to, ":"), static_cast<unsigned>(time.minutes().count()));
    to = putTwoDigits(put(to, ":"), static_cast<unsigned>(time.seconds().count()));
    put(to, hour < noon ? " AM" : " PM");
}

/// Between these the year has four digits in every zone; the C library knows offsets of up to
/// 24:59:59 hours.
constexpr sys_seconds firstPlain = sys_days{std::chrono::year{1000} / 1 / 3};
constexpr sys_seconds lastPlain = sys_days{std::chrono::year{9999} / 12 / 30};

}  // namespace

DateText localDateText(std::int64_t milliseconds) {
    constexpr std::int64_t inASecond = 1000;
    const sys_seconds time{seconds{milliseconds / inASecond}};
    DateText text{};
    if (time >= firstPlain && time < lastPlain) {
        if (const auto ahead = cachedOffset(std::chrono::floor<days>(time)).ahead) {
            putDate(text.data(), time + *ahead);
            return text;
        }
    }
    std::tm local{};
    if (arkeon::localTime(time.time_since_epoch().count(), &local)) {
        std::strftime(text.data(), text.size(), format, &local);
    }
    return text;
}
