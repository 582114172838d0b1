#pragma once

#include "arkeon/status.h"

#include <string>
#include <vector>

namespace arkeon {

/// PEM texts for one server.
struct Credentials {
    std::string certificate;  ///< the host's, with its chain
    std::string privateKey;
    std::string caBundle;  ///< the only CAs that are trusted
};

/// One request, checked and complete.
struct HttpsRequest {
    std::string method;
    std::string host;  ///< as it is in a URL: an IPv6 address in brackets
    int port = 0;
    std::string target;                 ///< sent byte for byte
    std::vector<std::string> headers;   ///< in libcurl's form
    const std::string* body = nullptr;  ///< not owned; null: none
};

/// What became of a request.
struct [[nodiscard]] HttpsReply {
    Status status = status::success;  ///< why no complete reply arrived, if it is not `success`
    std::string reason;               ///< the same in English, for the debug log
    int httpStatus = 0;               ///< 0: no complete reply arrived
    std::string body;                 ///< decoded
};

/// Sends requests over HTTPS. Implemented by the module libarkeon-https.so, which alone is linked
/// with libcurl and OpenSSL.
class HttpsTransport {
public:
    HttpsTransport() = default;
    HttpsTransport(const HttpsTransport&) = delete;
    HttpsTransport& operator=(const HttpsTransport&) = delete;
    virtual ~HttpsTransport() = default;

    /// Sends `request` once and waits for the complete reply. Requests to the same host and port
    /// share one connection.
    /// @throws std::bad_alloc
    virtual HttpsReply send(const HttpsRequest& request, const Credentials& credentials) = 0;
};

}  // namespace arkeon

/// The module's only exported function.
/// @return a new transport, owned by the caller; null if libcurl cannot be initialized
extern "C" arkeon::HttpsTransport* arkeon_new_https_transport();
