// The entry point of libarkeon-https.so with limits of the test's choice; nothing else differs from
// platform/https/Module.cpp.

#include "https/CurlTransport.h"

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

extern "C" __attribute__((visibility("default"))) arkeon::HttpsTransport*
arkeon_new_https_transport() {
    arkeon::TransferLimits limits;
    takeLimit("AK_TEST_CONNECT_MILLISECONDS", limits.connectMilliseconds);
    takeLimit("AK_TEST_STALL_SECONDS", limits.stallSeconds);
    takeLimit("AK_TEST_BODY_BYTES", limits.bodyBytes);
    return arkeon::newCurlTransport(limits).release();
}
