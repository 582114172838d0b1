// The whole tool with a debug log and limits of the test's choice; nothing else differs from
// driver/main.cpp.

#include "driver/ExecuteAkHostMgmt.h"
#include "platform/https/ClientLimits.h"

#include <cstdlib>

namespace {

/// Replaces `limit` by the number in the environment variable, if there is one.
template <typename Number>
void takeLimit(const char* variable, Number& limit) {
    if (const char* text = std::getenv(variable); text != nullptr) {
        limit = static_cast<Number>(std::strtoul(text, nullptr, 10));
    }
}

}  // namespace

/// AK_TEST_LOG_DIRECTORY: the folder that stands for /usr/zelvik/arkeon/logs.
int main(int argc, char** argv) {
    arkeon::ClientLimits& limits = arkeon::clientLimits();
    takeLimit("AK_TEST_CONNECT_MILLISECONDS", limits.connectMilliseconds);
    takeLimit("AK_TEST_STALL_SECONDS", limits.stallSeconds);
    takeLimit("AK_TEST_BODY_BYTES", limits.bodyBytes);
    const char* logDirectory = std::getenv("AK_TEST_LOG_DIRECTORY");
    return shellStatus(execute_akhostmgmt_in(logDirectory, argc, argv));
}
