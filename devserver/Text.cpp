#include "devserver/Text.h"

#include <charconv>

namespace devserver::text {

namespace {

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The number of bytes that a first byte announces; 0 when it is none.
std::size_t announcedLength(unsigned char first) {
    if (first < 0x80U) {
        return 1;
    }
    if (first >= 0xC2U && first <= 0xDFU) {
        return 2;
    }
    if (first >= 0xE0U && first <= 0xEFU) {
        return 3;
    }
    return first >= 0xF0U && first <= 0xF4U ? 4 : 0;
}

/// Rules out overlong forms, surrogates and what is beyond U+10FFFF (RFC 3629).
bool isSecondByteInRange(unsigned char first, unsigned char second) {
    switch (first) {
    case 0xE0:
        return second >= 0xA0U;
    case 0xED:
        return second <= 0x9FU;
    case 0xF0:
        return second >= 0x90U;
    case 0xF4:
        return second <= 0x8FU;
    case 0xC2:
        return second >= 0xA0U;  // below are the C1 control characters
    default:
        return true;
    }
}

/// The length of the plain character at the start of the text; 0 when there is none.
std::size_t plainLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = announcedLength(first);
    if (length == 0 || length > text.size() || first < 0x20U || first == 0x7FU) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(text[i])) {
            return 0;
        }
    }
    return length == 1 || isSecondByteInRange(first, static_cast<unsigned char>(text[1])) ? length
                                                                                          : 0;
}

std::optional<char> byteOf(std::string_view digits) {
    unsigned int value = 0;
    const char* end = digits.data() + digits.size();
    if (digits.size() != 2 || std::from_chars(digits.data(), end, value, 16).ptr != end) {
        return std::nullopt;
    }
    return static_cast<char>(static_cast<unsigned char>(value));
}

}  // namespace

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool equalIgnoringCase(std::string_view one, std::string_view other) {
    if (one.size() != other.size()) {
        return false;
    }
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (lower(one[i]) != lower(other[i])) {
            return false;
        }
    }
    return true;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const std::optional<char> byte = byteOf(text.substr(i + 1, 2));
        if (!byte) {
            return std::nullopt;
        }
        decoded += *byte;
        i += 2;
    }
    return decoded;
}

bool isPlain(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = plainLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string hex(std::span<const unsigned char> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

std::string visible(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = plainLength(text);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(text.front());
            shown += "\\x" + hex({&byte, 1});
            text.remove_prefix(1);
        } else {
            shown += text.substr(0, length);
            text.remove_prefix(length);
        }
    }
    return shown;
}

std::optional<unsigned long long> number(std::string_view text, unsigned long long limit) {
    unsigned long long value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || rest != end || error != std::errc() || value > limit) {
        return std::nullopt;
    }
    return value;
}

}  // namespace devserver::text
