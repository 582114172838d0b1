#pragma once

#include <string>
#include <string_view>

namespace arkeon {

/// Whether two server names mean the same: ASCII letters without regard to case, an IPv6 address
/// with or without its brackets.
bool sameServer(std::string_view one, std::string_view other);

/// `name` without the brackets around it, if it has both.
std::string_view withoutBrackets(std::string_view name);

/// Whether `name` is an IPv4 address, an IPv6 address (with or without brackets, without a zone) or
/// an ASCII host name: labels of 1 to 63 letters, digits, "-" and "_", at most 253 bytes, an
/// optional final dot. A name whose last label is a number is not valid (RFC 1123, section 2.1):
/// resolvers read `127.1` as an address.
bool isServerName(std::string_view name);

/// A server name as written in a URL: an IPv6 address in brackets.
std::string urlHost(std::string_view name);

}  // namespace arkeon
