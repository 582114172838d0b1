// Any TOML, a tilde standing for forty parts of a key: no tables are deeper than the bounds on keys
// and on values allow, and what is refused for its keys has such a key.

#include "config/TomlKeys.h"
#include "config/TomlFile.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"

#include <algorithm>

using fuzz::expect;

namespace {

std::string withLongKeys(std::string_view text) {
    std::string longer;
    for (const char letter : text) {
        if (letter == '~') {
            for (int part = 0; part < 40; ++part) {
                longer += "a.";
            }
        } else {
            longer += letter;
        }
    }
    return longer;
}

/// How many tables stand in each other, those in arrays too.
std::size_t longestKey(const toml::node& node) {
    std::size_t longest = 0;
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table) {
            longest = std::max(longest, 1 + longestKey(value));
        }
    } else if (const toml::array* array = node.as_array()) {
        for (const toml::node& value : *array) {
            longest = std::max(longest, longestKey(value));
        }
    }
    return longest;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = withLongKeys(fuzz::Input(data, size).rest());
    const bool refused = arkeon::findLongKey(text).has_value();
    try {
        const toml::table table = toml::parse(text, std::string_view("text"));
        const std::size_t longest = longestKey(table);
        expect(!refused || longest > arkeon::mostKeyParts, "what is refused has a long key");
        // A heading's key, a key below it, and those of the tables within its value.
        const auto braces = static_cast<std::size_t>(std::count(text.begin(), text.end(), '{'));
        expect(refused || longest <= (2 + braces) * arkeon::mostKeyParts, "what is taken has none");
    } catch (const toml::parse_error&) {
        // Refused by the library.
    }
    return 0;
}
