#include "https/CurlHandle.h"

#include <map>
#include <poll.h>

namespace arkeon {

CurlHandle& CurlHandle::forServer(const std::string& server, int port) {
    static std::map<std::string, std::unique_ptr<CurlHandle>> handles;
    std::unique_ptr<CurlHandle>& handle = handles[server + ' ' + std::to_string(port)];
    if (handle == nullptr || handle->connectionEnded()) {
        handle.reset(new CurlHandle(client().curl_easy_init()));
    }
    return *handle;
}

/// Whether there is something to read on the kept connection although nothing was asked: the server
/// has ended it or is about to. libcurl takes a connection on which TLS's close is waiting for a
/// live one.
bool CurlHandle::connectionEnded() const {
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (handle_ == nullptr ||
        client().curl_easy_getinfo(handle_.get(), CURLINFO_ACTIVESOCKET, &socket) != CURLE_OK ||
        socket == CURL_SOCKET_BAD) {
        return false;
    }
    pollfd waiting{socket, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

}  // namespace arkeon
