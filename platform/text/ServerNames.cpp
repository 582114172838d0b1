#include "text/ServerNames.h"

#include "text/Ascii.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>

namespace arkeon {
namespace {

char lowerAscii(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool isLabelByte(char byte) {
    return isAlphanumeric(byte) || byte == '-' || byte == '_';
}

bool isLabel(std::string_view label) {
    constexpr std::size_t maxLabel = 63;
    return !label.empty() && label.size() <= maxLabel &&
           std::all_of(label.begin(), label.end(), isLabelByte);
}

bool isHexDigit(char byte) {
    return isDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

/// As inet_aton(3) reads numbers: 127.1 and 0x7f.1 are addresses to a resolver, not names.
bool isNumber(std::string_view label) {
    if (label.starts_with("0x") || label.starts_with("0X")) {
        return std::all_of(label.begin() + 2, label.end(), isHexDigit);
    }
    return std::all_of(label.begin(), label.end(), isDigit);
}

bool isHostName(std::string_view name) {
    constexpr std::size_t maxName = 253;
    if (name.ends_with('.')) {
        name.remove_suffix(1);
    }
    if (name.size() > maxName) {
        return false;
    }
    for (;;) {
        const std::size_t dot = name.find('.');
        const std::string_view label = name.substr(0, dot);
        if (!isLabel(label)) {
            return false;
        }
        if (dot == std::string_view::npos) {
            return !isNumber(label);
        }
        name.remove_prefix(dot + 1);
    }
}

bool isAddress(int family, std::string_view text) {
    std::array<unsigned char, sizeof(in6_addr)> binary{};
    const bool plain = text.find('\0') == std::string_view::npos;
    return plain && inet_pton(family, std::string(text).c_str(), binary.data()) == 1;
}

}  // namespace

std::string_view withoutBrackets(std::string_view name) {
    const bool bracketed = name.starts_with('[') && name.ends_with(']');
    return bracketed ? name.substr(1, name.size() - 2) : name;
}

bool sameServer(std::string_view one, std::string_view other) {
    one = withoutBrackets(one);
    other = withoutBrackets(other);
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
        return lowerAscii(a) == lowerAscii(b);
    });
}

bool isServerName(std::string_view name) {
    return isAddress(AF_INET, name) || isAddress(AF_INET6, withoutBrackets(name)) ||
           isHostName(name);
}

std::string urlHost(std::string_view name) {
    const std::string_view bare = withoutBrackets(name);
    return bare.find(':') == std::string_view::npos ? std::string(name)
                                                    : '[' + std::string(bare) + ']';
}

}  // namespace arkeon
