#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace arkeon {

/// `text` with every byte that is not unreserved (RFC 3986, 2.3) as `%XX`.
std::string percentEncoded(std::string_view text);

/// Whether `uri` may be sent as a request target (RFC 9112, 3.2): no space, control character or
/// DEL, and no path segment that is `.` or `..`, even written `%2e`, which a server or gateway that
/// normalizes paths (RFC 3986, 5.2.4) would resolve to another resource.
bool isRequestTarget(std::string_view uri);

/// A complete header line in the form in which libcurl sends it: `Name;` for an empty value, which
/// libcurl would drop otherwise. Nothing when the line holds a control character or does not start
/// with a field name (RFC 9110, 5.1) and a colon.
std::optional<std::string> curlHeader(std::string_view line);

}  // namespace arkeon
