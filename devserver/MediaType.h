#pragma once

#include <string_view>

/// The rules of the request headers that say in which form bodies come and go.
namespace devserver::mediaTypes {

/// Whether an Accept header lets the server's media type pass; a missing header does.
bool accepts(std::string_view acceptHeader);
/// Whether a Content-Type header names the server's media type, in no version or in its own.
bool isOurs(std::string_view contentTypeHeader);
/// Whether an Accept-Encoding header allows gzip.
bool acceptsGzip(std::string_view acceptEncodingHeader);

}  // namespace devserver::mediaTypes
