#include "text/ServerNames.h"

#include <algorithm>

namespace arkeon {
namespace {

char lowerAscii(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

std::string_view withoutBrackets(std::string_view name) {
    const bool bracketed = name.starts_with('[') && name.ends_with(']');
    return bracketed ? name.substr(1, name.size() - 2) : name;
}

bool sameServer(std::string_view one, std::string_view other) {
    one = withoutBrackets(one);
    other = withoutBrackets(other);
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
        return lowerAscii(a) == lowerAscii(b);
    });
}

}  // namespace arkeon
