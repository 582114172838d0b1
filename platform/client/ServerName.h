#pragma once

#include <string>
#include <string_view>

namespace arkeon {

/// Whether `name` is an IPv4 address, an IPv6 address (with or without brackets, without a zone) or
/// an ASCII host name: labels of 1 to 63 letters, digits, "-" and "_", at most 253 bytes, an
/// optional final dot. A name whose last label is a number is none (RFC 1123, 2.1): resolvers take
/// `127.1` for an address.
bool isServerName(std::string_view name);

/// A server name as it stands in a URL: an IPv6 address in brackets.
std::string urlHost(std::string_view name);

}  // namespace arkeon
