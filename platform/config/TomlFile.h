#pragma once

#include <optional>
#include <string>
#include <toml++/toml.h>

namespace arkeon {

/// The outcome of reading a TOML file.
enum class TomlResult {
    read,
    missing,    ///< there is no such file; the caller logs it if it matters
    unreadable  ///< it cannot be read or is not TOML; the reason is in the debug log
};

/// Reads `path` into `table`.
TomlResult readToml(const std::string& path, toml::table& table);

/// "FILE, line L, column C", for the log.
std::string place(const std::string& path, const toml::source_region& region);

/// The string value of `node`; empty if it is not a string or contains a NUL.
std::optional<std::string> plainText(const toml::node* node);

}  // namespace arkeon
