#pragma once

#include <array>
#include <cstdint>

/// A date and time with its terminator.
using DateText = std::array<char, 100>;

/// Milliseconds since the epoch as local date and time, as in "Nov 21, 2026 08:15:30 AM"; the part
/// of a second is dropped (towards zero). Empty for a year that does not fit.
///
/// What the time zone has to say is asked for once for each day, not once for each call: a large
/// listing has some hundred thousand dates of a few thousand days.
DateText localDateText(std::int64_t milliseconds);
