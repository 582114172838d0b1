#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/// An input, taken apart from its beginning.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    /// The next byte; 0 when nothing is left.
    unsigned byte() {
        if (rest_.empty()) {
            return 0;
        }
        const auto first = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }

    /// The text up to the next NUL or the end, as argv and the environment hold texts.
    std::string text() {
        const std::size_t end = rest_.find('\0');
        std::string text(rest_.substr(0, end));
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return text;
    }

    /// The texts that are left.
    std::vector<std::string> texts() {
        std::vector<std::string> all;
        while (!atEnd()) {
            all.push_back(text());
        }
        return all;
    }

    /// Everything that is left, NUL bytes included.
    std::string rest() { return std::string(rest_); }

    bool atEnd() const { return rest_.empty(); }

private:
    std::string_view rest_;
};

}  // namespace fuzz
