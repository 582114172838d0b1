#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace arkeon {

/// A place in a text, counted from 1; columns in letters of UTF-8.
struct TextPlace {
    std::size_t line;
    std::size_t column;
};

/// No key of a TOML file has more parts.
inline constexpr std::size_t mostKeyParts = 32;

/// Finds a key of more than `mostKeyParts` parts (a.b.c...) in a TOML text. Each part makes a table
/// within a table, and toml++, which bounds how deep values are nested, does not bound that: it
/// walks tables by recursion, and some ten thousand of them end the stack.
std::optional<TextPlace> findLongKey(std::string_view text);

}  // namespace arkeon
