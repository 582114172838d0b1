#pragma once

#include <cstddef>
#include <string_view>

namespace arkeon {

/// The length (1 to 4) of the well-formed UTF-8 character (RFC 3629) at the start of `text`; 0 if
/// there is none: the text is empty, ill-formed or ends inside the character.
std::size_t utf8CharacterLength(std::string_view text);

/// Whether `byte` is a UTF-8 continuation byte.
constexpr bool isUtf8Continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Whether `text` starts with a C1 control character (U+0080 to U+009F) in UTF-8 form.
bool startsWithUtf8C1(std::string_view text);

}  // namespace arkeon
