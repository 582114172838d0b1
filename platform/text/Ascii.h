#pragma once

#include <string>
#include <string_view>

/// Bytes as ASCII names them, whatever the locale.
namespace arkeon {

inline constexpr unsigned char deleteByte = 0x7F;

inline bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

inline bool isAlphanumeric(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || isDigit(letter);
}

/// C0 or DEL.
inline bool isControl(char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    return byte < ' ' || byte == deleteByte;
}

/// Appends a byte as `\xHH`.
inline void appendHex(std::string& text, char letter) {
    constexpr std::string_view digits = "0123456789abcdef";
    const unsigned byte = static_cast<unsigned char>(letter);
    text += "\\x";
    text += digits[byte >> 4U];
    text += digits[byte & 0xFU];
}

}  // namespace arkeon
