#pragma once

#include <string>
#include <string_view>

/// Bytes as ASCII names them, whatever the locale.
namespace arkeon {

inline constexpr unsigned char deleteByte = 0x7F;

inline bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

inline bool isAlphanumeric(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || isDigit(byte);
}

/// C0 or DEL.
inline bool isControl(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value < ' ' || value == deleteByte;
}

/// Appends a byte as `\xHH`.
inline void appendHex(std::string& text, char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const unsigned value = static_cast<unsigned char>(byte);
    text += "\\x";
    text += digits[value >> 4U];
    text += digits[value & 0xFU];
}

}  // namespace arkeon
