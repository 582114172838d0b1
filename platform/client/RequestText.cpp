#include "client/RequestText.h"

#include "text/Ascii.h"

#include <algorithm>

namespace arkeon {
namespace {

bool isUnreserved(char byte) {
    return isAlphanumeric(byte) || std::string_view("-._~").find(byte) != std::string_view::npos;
}

/// RFC 9110, 5.6.2: what a field name consists of.
bool isTokenByte(char byte) {
    return isAlphanumeric(byte) ||
           std::string_view("!#$%&'*+-.^_`|~").find(byte) != std::string_view::npos;
}

bool isFieldName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), isTokenByte);
}

/// RFC 3986, 3.3: "." and "..", where a dot may also be percent-encoded.
bool isDotSegment(std::string_view segment) {
    std::size_t dots = 0;
    while (!segment.empty()) {
        const bool encoded = segment.starts_with("%2e") || segment.starts_with("%2E");
        if (!encoded && segment.front() != '.') {
            return false;
        }
        segment.remove_prefix(encoded ? 3 : 1);
        ++dots;
    }
    return dots == 1 || dots == 2;
}

/// A "#" ends a segment too: to some servers a fragment begins there.
bool hasDotSegment(std::string_view path) {
    for (;;) {
        const std::size_t end = path.find_first_of("/#");
        if (isDotSegment(path.substr(0, end))) {
            return true;
        }
        if (end == std::string_view::npos) {
            return false;
        }
        path.remove_prefix(end + 1);
    }
}

}  // namespace

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char byte : text) {
        if (isUnreserved(byte)) {
            encoded += byte;
        } else {
            const unsigned value = static_cast<unsigned char>(byte);
            encoded += {'%', digits[value >> 4U], digits[value & 0xFU]};
        }
    }
    return encoded;
}

bool isRequestTarget(std::string_view uri) {
    return std::none_of(
               uri.begin(), uri.end(), [](char byte) { return byte == ' ' || isControl(byte); }) &&
           !hasDotSegment(uri.substr(0, uri.find('?')));
}

std::optional<std::string> curlHeader(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !isFieldName(line.substr(0, colon)) ||
        std::any_of(line.begin(), line.end(), isControl)) {
        return std::nullopt;
    }
    const bool empty = line.find_first_not_of(' ', colon + 1) == std::string_view::npos;
    return empty ? std::string(line.substr(0, colon)) + ';' : std::string(line);
}

}  // namespace arkeon
