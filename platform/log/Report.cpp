#include "log/Report.h"

#include "arkeon/debug_log.h"

namespace arkeon {

void report(std::initializer_list<std::string_view> pieces) {
    logmsg(logLevel::failure, pieces, "arkeon");
}

}  // namespace arkeon
