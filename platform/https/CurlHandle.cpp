#include "https/CurlHandle.h"

#include <cstdlib>
#include <map>
#include <openssl/crypto.h>
#include <poll.h>

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

CurlHandle& CurlHandle::forServer(const std::string& server, int port) {
    // In this order, so that the connections end before OpenSSL does when the process exits.
    static const bool ready = initialise();
    static std::map<std::string, std::unique_ptr<CurlHandle>> handles;
    std::unique_ptr<CurlHandle>& handle = handles[server + ' ' + std::to_string(port)];
    if (handle == nullptr || handle->connectionEnded()) {
        handle.reset(new CurlHandle(ready ? curl_easy_init() : nullptr));
    }
    return *handle;
}

/// Whether there is something to read on the kept connection although nothing was asked: the server
/// has ended it or is about to. libcurl takes a connection on which TLS's close is waiting for a
/// live one.
bool CurlHandle::connectionEnded() const {
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (handle_ == nullptr ||
        curl_easy_getinfo(handle_.get(), CURLINFO_ACTIVESOCKET, &socket) != CURLE_OK ||
        socket == CURL_SOCKET_BAD) {
        return false;
    }
    pollfd waiting{socket, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

}  // namespace arkeon
