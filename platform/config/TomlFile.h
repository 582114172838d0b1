#pragma once

#include "config/Toml.h"

#include <optional>
#include <string>

namespace arkeon {

/// What became of reading a TOML file; the debug log has the reason where it was not read.
enum class TomlResult {
    read,
    missing,    ///< there is no such file
    unreadable  ///< it cannot be read or is not TOML
};

/// Reads `path` into `table`.
TomlResult readToml(const std::string& path, toml::table& table);

/// "FILE, line L, column C", for the log.
std::string place(const std::string& path, const toml::source_region& region);

/// The text of `node`, if it is a text that a C string can hold.
std::optional<std::string> plainText(const toml::node* node);

}  // namespace arkeon
