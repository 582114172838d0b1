#pragma once

#include <curl/curl.h>

namespace arkeon {

/// Whether the header section of the final reply states at most one length, and that as a number
/// (RFC 9112, 6.3). libcurl itself uses the last of several values, skips what precedes the
/// first digit, and ignores a number over 64 bits. Valid once the header section is complete.
bool hasUnambiguousLength(CURL* handle);

/// Whether only the end of the connection ends the reply's body (RFC 9112, 6.3). To libcurl a reply
/// that has no body because of its status, such as 204 and 304, has the length 0.
bool endsWithConnection(CURL* handle);

}  // namespace arkeon
