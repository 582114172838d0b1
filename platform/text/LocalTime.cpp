#include "arkeon/text.h"

namespace arkeon {

bool localTime(std::time_t seconds, std::tm* result) {
    // localtime_r need not look at TZ (POSIX); tzset does, once.
    static const bool zoneRead = (tzset(), true);
    *result = std::tm{};
    if (zoneRead && localtime_r(&seconds, result) != nullptr) {
        return true;
    }
    *result = std::tm{};
    return false;
}

}  // namespace arkeon
