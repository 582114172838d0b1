#pragma once

#include <cstddef>
#include <curl/curl.h>
#include <string>

namespace arkeon {

/// What libcurl's callbacks saw of one transfer; libcurl's result alone does not say it.
struct TransferNotes {
    CURL* handle = nullptr;  ///< whose transfer it is
    std::string body;
    std::size_t bodyLimit = 0;
    std::size_t headerBytes = 0;   ///< of all header sections, interim ones included
    bool requestSent = false;      ///< bytes of the request went out
    bool resendRejected = false;   ///< libcurl wanted to send the request again
    bool replyIsInterim = false;   ///< the header section that arrives is that of a 1xx reply
    bool replyBegun = false;       ///< a line of the reply arrived
    bool insideHeaders = false;    ///< after a status line and before the empty line
    bool headersComplete = false;  ///< the final reply's header section arrived completely
    bool alertReceived = false;    ///< the server sent a fatal TLS alert
    bool tlsClosed = false;        ///< the server closed TLS with close_notify
    bool replyTooLarge = false;
    bool lengthAmbiguous = false;  ///< the headers do not state one length
    bool outOfMemory = false;      ///< the body did not fit in memory
};

/// Makes `handle` report to `notes`, which must outlive all connections of the handle.
/// @return CURLE_OK or the first option's failure
CURLcode installCallbacks(CURL* handle, TransferNotes& notes);

}  // namespace arkeon
