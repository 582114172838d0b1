#include "arkeon/text.h"

namespace arkeon {

bool localTime(std::time_t seconds, std::tm* result) {
    // localtime_r need not look at TZ (POSIX); tzset does, once.
    [[maybe_unused]] static const bool zoneRead = (tzset(), true);
    if (localtime_r(&seconds, result) != nullptr) {
        return true;
    }
    *result = std::tm{};
    return false;
}

}  // namespace arkeon
