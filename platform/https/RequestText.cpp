#include "https/RequestText.h"

#include "text/Ascii.h"

#include <algorithm>

namespace arkeon {
namespace {

bool isUnreserved(char letter) {
    return isAlphanumeric(letter) ||
           std::string_view("-._~").find(letter) != std::string_view::npos;
}

/// RFC 9110, 5.6.2: what a field name consists of.
bool isTokenByte(char letter) {
    return isAlphanumeric(letter) ||
           std::string_view("!#$%&'*+-.^_`|~").find(letter) != std::string_view::npos;
}

bool isFieldName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), isTokenByte);
}

}  // namespace

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char letter : text) {
        if (isUnreserved(letter)) {
            encoded += letter;
        } else {
            const unsigned byte = static_cast<unsigned char>(letter);
            encoded += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
    return encoded;
}

bool isRequestAddress(std::string_view uri) {
    return std::none_of(
        uri.begin(), uri.end(), [](char letter) { return letter == ' ' || isControl(letter); });
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
