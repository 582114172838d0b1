#include "config/TomlFile.h"

#include "config/ReadFile.h"
#include "log/Report.h"

namespace arkeon {

std::string place(const std::string& path, const toml::source_region& region) {
    return path + ", line " + std::to_string(region.begin.line) + ", column " +
           std::to_string(region.begin.column);
}

TomlResult readToml(const std::string& path, toml::table& table) {
    const FileContent file = readFile(path);
    if (isMissingFile(file.error)) {
        return TomlResult::missing;
    }
    if (file.error != 0) {
        report({path, ": ", file.reason});
        return TomlResult::unreadable;
    }
    try {
        table = toml::parse(file.text, path);
    } catch (const toml::parse_error& failure) {
        report({place(path, failure.source()), ": ", failure.description()});
        return TomlResult::unreadable;
    }
    return TomlResult::read;
}

std::optional<std::string> plainText(const toml::node* node) {
    const toml::value<std::string>* text = node == nullptr ? nullptr : node->as_string();
    if (text == nullptr || text->get().find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return text->get();
}

}  // namespace arkeon
