#include "hostmgmt/listing/LocalDate.h"

#include "arkeon/text.h"

#include <ctime>
#include <limits>
#include <optional>

namespace {

constexpr std::int64_t secondsPerDay = std::int64_t{24} * 60 * 60;

/// UTC offset of one day since the epoch, in seconds; empty if the offset changes during that day.
struct DayOffset {
    std::int64_t day = std::numeric_limits<std::int64_t>::max();
    std::optional<std::int64_t> offset;
};

/// Leap seconds, which the "right" time zones count, are part of the offset.
std::optional<std::int64_t> offsetAt(std::int64_t seconds) {
    std::tm local{};
    return arkeon::localTime(seconds, &local) ? std::optional(timegm(&local) - seconds)
                                              : std::nullopt;
}

DayOffset offsetOf(std::int64_t day) {
    const auto begin = offsetAt(day * secondsPerDay);
    const auto end = offsetAt((day + 1) * secondsPerDay - 1);
    return {day, begin == end ? begin : std::nullopt};
}

/// The offsets of recent days: eleven years, if the days follow each other.
const DayOffset& cachedOffset(std::int64_t day) {
    static std::array<DayOffset, 4096> cache;
    DayOffset& entry = cache[static_cast<std::uint64_t>(day) % cache.size()];
    if (entry.day != day) {
        entry = offsetOf(day);
    }
    return entry;
}

/// @return false if the year does not fit
bool cachedLocalTime(std::int64_t seconds, std::tm* local) {
    const std::int64_t day = seconds / secondsPerDay - (seconds % secondsPerDay < 0 ? 1 : 0);
    if (const auto offset = cachedOffset(day).offset) {
        const std::time_t shifted = seconds + *offset;
        return gmtime_r(&shifted, local) != nullptr;
    }
    return arkeon::localTime(seconds, local);
}

}  // namespace

DateText localDateText(std::int64_t milliseconds) {
    constexpr std::int64_t millisecondsPerSecond = 1000;
    DateText text{};
    std::tm local{};
    if (cachedLocalTime(milliseconds / millisecondsPerSecond, &local)) {
        std::strftime(text.data(), text.size(), "%b %d, %Y %I:%M:%S %p", &local);
    }
    return text;
}
