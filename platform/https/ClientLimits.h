#pragma once

#include <cstddef>

namespace arkeon {

/// How long a transfer may take and how large a reply may be.
struct ClientLimits {
    long connectMilliseconds = 30'000;  ///< from the name's resolution to the end of the handshake
    long stallSeconds = 120;            ///< how long less than a byte a second may move
    std::size_t bodyBytes = std::size_t{2} * 1024 * 1024 * 1024;  ///< of the decoded body
};

/// The limits of this process; a program may change them between two requests.
inline ClientLimits& clientLimits() {
    static ClientLimits limits;
    return limits;
}

}  // namespace arkeon
