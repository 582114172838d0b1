#pragma once

#include <cstddef>
#include <string>

namespace devserver {

/// Random bytes of OpenSSL's generator, as twice as many hexadecimal digits.
std::string randomHex(std::size_t bytes);

/// A random UUID (RFC 4122, version 4).
std::string randomUuid();

}  // namespace devserver
