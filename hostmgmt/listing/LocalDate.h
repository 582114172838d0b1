#pragma once

#include <array>
#include <cstdint>

/// A date and time with its terminator.
using DateText = std::array<char, 100>;

/// Milliseconds since the epoch as local date and time, such as "Nov 21, 2026 08:15:30 AM";
/// fractions of a second are dropped (towards zero). Empty if the year does not fit.
///
/// Asks the time zone once per day instead of once per call: a large listing has some hundred
/// thousand dates of a few thousand days.
DateText localDateText(std::int64_t milliseconds);
