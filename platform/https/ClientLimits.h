#pragma once

#include <cstddef>

namespace arkeon {

/// How long a transfer may take and how large a reply may be.
struct ClientLimits {
    long connectMilliseconds = 30'000;  ///< from the name's resolution to the end of the handshake
    long stallSeconds = 120;            ///< how long less than a byte a second may move
    std::size_t bodyBytes = std::size_t{2} * 1024 * 1024 * 1024;  ///< of the decoded body
};

/// Of a reply's head, in bytes: far above what a primary server sends, and below the limit that
/// libcurl has of its own, which it reports as a broken connection.
inline constexpr std::size_t largestHead = std::size_t{256} * 1024;

/// The limits of this process; a program may change them between two requests.
inline ClientLimits& clientLimits() {
    static ClientLimits limits;
    return limits;
}

}  // namespace arkeon
