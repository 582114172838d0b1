#include "config/TomlKeys.h"

#include "text/Utf8.h"

#include <algorithm>

namespace arkeon {
namespace {

/// Walks a TOML text (TOML 1.0) past its strings and comments. What is no TOML is the library's to
/// refuse, which makes no tables of what comes after it.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {}

    std::optional<TextPlace> findLongKey();

private:
    bool startsWith(std::string_view start) const { return text_.substr(at_).starts_with(start); }
    void skipString(char quote);
    void skipOneLine(char quote);
    void skipManyLines(char quote);
    void skipComment();
    void countDots(char letter);
    TextPlace place() const;

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t dots_ = 0;
};

std::optional<TextPlace> Scanner::findLongKey() {
    while (at_ < text_.size()) {
        const char letter = text_[at_];
        if (letter == '"' || letter == '\'') {
            skipString(letter);
        } else if (letter == '#') {
            skipComment();
        } else {
            countDots(letter);
            if (dots_ >= mostKeyParts) {
                return place();
            }
            ++at_;
        }
    }
    return std::nullopt;
}

void Scanner::skipString(char quote) {
    const std::string_view three = quote == '"' ? R"(""")" : "'''";
    if (startsWith(three)) {
        at_ += three.size();
        skipManyLines(quote);
    } else {
        ++at_;
        skipOneLine(quote);
    }
}

void Scanner::skipOneLine(char quote) {
    while (at_ < text_.size() && text_[at_] != '\n') {
        const char letter = text_[at_++];
        if (letter == quote) {
            return;
        }
        at_ += letter == '\\' && quote == '"' ? 1 : 0;
    }
}

/// Ends with three quotes, before which two more may stand.
void Scanner::skipManyLines(char quote) {
    std::size_t quotes = 0;
    while (at_ < text_.size() && (quotes < 3 || (text_[at_] == quote && quotes < 5))) {
        const char letter = text_[at_++];
        quotes = letter == quote ? quotes + 1 : 0;
        at_ += letter == '\\' && quote == '"' ? 1 : 0;
    }
}

void Scanner::skipComment() {
    at_ = std::min(text_.find('\n', at_), text_.size());
}

/// A key may have blanks around its dots; each of the others ends it.
void Scanner::countDots(char letter) {
    constexpr std::string_view ends = "=,[]{}\n";
    if (letter == '.') {
        ++dots_;
    } else if (ends.find(letter) != std::string_view::npos) {
        dots_ = 0;
    }
}

TextPlace Scanner::place() const {
    const std::string_view before = text_.substr(0, at_);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    const auto letters = std::count_if(
        line.begin(), line.end(), [](char letter) { return !isUtf8Continuation(letter); });
    const auto lines = std::count(before.begin(), before.end(), '\n');
    return {static_cast<std::size_t>(lines) + 1, static_cast<std::size_t>(letters) + 1};
}

}  // namespace

std::optional<TextPlace> findLongKey(std::string_view text) {
    return Scanner(text).findLongKey();
}

}  // namespace arkeon
