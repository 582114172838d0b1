#pragma once

#include <curl/curl.h>

namespace arkeon {

/// Whether the head of the final reply says at most one length, and that as a number (RFC 9112,
/// 6.3): libcurl takes the last of several, what stands before the first letter, and none at all
/// where a number is beyond 64 bits. To be asked once the head is whole.
bool hasClearLength(CURL* handle);

/// Whether only the end of the connection ends the reply's body (RFC 9112, 6.3). To libcurl a reply
/// that has no body because of its status, as 204 and 304, has the length 0.
bool endsWithConnection(CURL* handle);

}  // namespace arkeon
