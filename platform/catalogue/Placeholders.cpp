#include "catalogue/Placeholders.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace arkeon {
namespace {

/// The type of each argument, "ld" for `%ld`, in the arguments' order.
using ArgumentTypes = std::vector<std::string>;

constexpr std::string_view digits = "0123456789";

/// Reads the conversions of one format text (POSIX, fprintf).
class FormatParser {
public:
    explicit FormatParser(std::string_view text) : text_(text) {}

    /// The types of the arguments; nothing when the text is no format that can be trusted.
    std::optional<ArgumentTypes> parse();

private:
    bool parseConversion();
    std::size_t readPosition();
    bool skipNumber();
    bool skipWidthAndPrecision();
    bool readType(std::string& type) const;
    bool place(std::size_t position, std::string type);
    void skipAny(std::string_view characters);

    static constexpr std::size_t maxArguments = 9;
    std::string_view text_;
    ArgumentTypes types_;
    std::size_t count_ = 0;
    bool positional_ = false;
};

std::optional<ArgumentTypes> FormatParser::parse() {
    for (;;) {
        const std::size_t percent = text_.find('%');
        if (percent == std::string_view::npos) {
            // A gap in the positions leaves a number of types that differs from the count.
            return types_.size() == count_ ? std::optional(types_) : std::nullopt;
        }
        text_.remove_prefix(percent + 1);
        if (text_.starts_with('%')) {
            text_.remove_prefix(1);
        } else if (!parseConversion()) {
            return std::nullopt;
        }
    }
}

bool FormatParser::parseConversion() {
    const std::size_t position = readPosition();
    std::string type;
    skipAny("-+ #0'");
    return skipWidthAndPrecision() && readType(type) && place(position, std::move(type));
}

/// The position of `2$`; 0 when there is none.
std::size_t FormatParser::readPosition() {
    if (text_.size() < 2 || text_[1] != '$' || text_[0] < '1' || text_[0] > '9') {
        return 0;
    }
    const auto position = static_cast<std::size_t>(text_[0] - '0');
    text_.remove_prefix(2);
    return position;
}

void FormatParser::skipAny(std::string_view characters) {
    const std::size_t end = text_.find_first_not_of(characters);
    text_.remove_prefix(end == std::string_view::npos ? text_.size() : end);
}

bool FormatParser::skipNumber() {
    constexpr std::size_t maxDigits = 3;
    const std::size_t before = text_.size();
    skipAny(digits);
    return before - text_.size() <= maxDigits;
}

bool FormatParser::skipWidthAndPrecision() {
    if (!skipNumber()) {
        return false;
    }
    if (!text_.starts_with('.')) {
        return true;
    }
    text_.remove_prefix(1);
    return skipNumber();
}

/// Consumes nothing: what it reads holds no `%`, so `parse` skips it.
bool FormatParser::readType(std::string& type) const {
    const std::size_t end = text_.find_first_not_of("hlqLjzt");
    if (end == std::string_view::npos) {
        return false;
    }
    const char conversion = text_[end];
    type = text_.substr(0, end);
    type += conversion == 'i' ? 'd' : conversion;
    return std::string_view("diouxXeEfFgGaAcsp").find(conversion) != std::string_view::npos;
}

bool FormatParser::place(std::size_t position, std::string type) {
    if (count_ > 0 && positional_ != (position != 0)) {
        return false;
    }
    positional_ = position != 0;
    const std::size_t index = positional_ ? position - 1 : count_;
    if (++count_ > maxArguments) {
        return false;
    }
    if (types_.size() <= index) {
        types_.resize(index + 1);
    }
    const bool free = types_[index].empty();
    types_[index] = std::move(type);
    return free;
}

}  // namespace

bool placeholdersFit(const char* original, const char* translation) {
    const auto wanted = FormatParser(original).parse();
    return wanted && wanted == FormatParser(translation).parse();
}

}  // namespace arkeon
