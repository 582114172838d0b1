#include "log/Report.h"

#include "arkeon/debug_log.h"

namespace arkeon {

void report(std::initializer_list<std::string_view> pieces) {
    constexpr int failureLevel = 16;
    logmsg(failureLevel, pieces, "arkeon");
}

}  // namespace arkeon
