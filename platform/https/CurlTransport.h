#pragma once

#include "https/HttpsTransport.h"

#include <cstddef>
#include <memory>

namespace arkeon {

/// How long a transfer may take and how large a reply may be.
struct TransferLimits {
    long connectMilliseconds = 30'000;  ///< from name resolution to the end of the handshake
    long stallSeconds = 120;            ///< how long less than a byte a second may move
    std::size_t bodyBytes = std::size_t{2} * 1024 * 1024 * 1024;  ///< of the decoded body
};

/// Initializes libcurl and OpenSSL for the process and makes a transport on them.
/// @return null if they cannot be initialized
std::unique_ptr<HttpsTransport> newCurlTransport(const TransferLimits& limits);

}  // namespace arkeon
