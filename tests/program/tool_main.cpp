// The whole tool with a debug log and a time-out of the test's choice; nothing else differs from
// driver/main.cpp.

#include "driver/ExecuteAkHostMgmt.h"
#include "platform/https/ClientLimits.h"

#include <cstdlib>

namespace {

/// AK_TEST_STALL_SECONDS: how long a server may stay silent.
void shortenStalls() {
    if (const char* seconds = std::getenv("AK_TEST_STALL_SECONDS"); seconds != nullptr) {
        arkeon::clientLimits().stallSeconds = std::strtol(seconds, nullptr, 10);
    }
}

}  // namespace

/// AK_TEST_LOG_DIRECTORY: the folder that stands for /usr/zelvik/arkeon/logs.
int main(int argc, char** argv) {
    shortenStalls();
    const char* logDirectory = std::getenv("AK_TEST_LOG_DIRECTORY");
    return shellStatus(execute_akhostmgmt_in(logDirectory, argc, argv));
}
