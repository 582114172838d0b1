#pragma once

#include <cstddef>
#include <curl/curl.h>
#include <string>

namespace arkeon {

/// What libcurl's callbacks saw of one transfer; libcurl's result alone does not tell.
struct TransferNotes {
    CURL* handle = nullptr;  ///< whose transfer it is
    std::string body;
    std::size_t bodyLimit = 0;
    std::size_t headBytes = 0;    ///< of all heads, interim ones included
    bool requestSent = false;     ///< bytes of the request went out
    bool resendRefused = false;   ///< libcurl wanted to send the request again
    bool replyIsInterim = false;  ///< the head that arrives is that of a 1xx reply
    bool replyBegun = false;      ///< a line of the reply's head arrived
    bool insideHead = false;      ///< after a status line and before the head's empty line
    bool replyHeadWhole = false;  ///< the final reply's head arrived with its empty line
    bool alertReceived = false;   ///< the server sent a fatal TLS alert
    bool tlsClosed = false;       ///< the server ended TLS in order
    bool replyTooLarge = false;
    bool lengthUnclear = false;  ///< the head does not tell one length
    bool outOfMemory = false;
};

/// Makes `handle` report to `notes`, which must outlive all connections of the handle.
/// @return CURLE_OK or the first option's failure
CURLcode takeNotes(CURL* handle, TransferNotes& notes);

/// The body that arrived, without most of the room that was taken for a longer one.
std::string takeBody(TransferNotes& notes);

}  // namespace arkeon
