#include "https/CurlHandle.h"

#include <cstdlib>
#include <openssl/crypto.h>

namespace arkeon {
namespace {

/// The environment decides nothing about TLS: libcurl would write the session keys to the file that
/// SSLKEYLOGFILE names, and OpenSSL would read the configuration that OPENSSL_CONF names.
bool initialise() {
    unsetenv("SSLKEYLOGFILE");
    return OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1 &&
           curl_global_init(CURL_GLOBAL_ALL) == CURLE_OK;
}

}  // namespace

CurlHandle& CurlHandle::instance() {
    static CurlHandle handle;
    return handle;
}

CurlHandle::CurlHandle() : handle_(initialise() ? curl_easy_init() : nullptr) {}

}  // namespace arkeon
