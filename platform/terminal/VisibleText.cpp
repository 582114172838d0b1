#include "arkeon/console.h"
#include "text/Ascii.h"
#include "text/Utf8.h"

namespace arkeon {
namespace {

/// `^X`: the key that types the control character.
void appendCaret(std::string& shown, unsigned byte) {
    constexpr unsigned keyBit = 0x40;
    shown += '^';
    shown += static_cast<char>(byte ^ keyBit);
}

bool isShownAsCaret(char byte) {
    return isControl(byte) && byte != '\n' && byte != '\t';
}

/// Appends the first character of `text` in visible form, or its first byte if that is not UTF-8.
/// @return how many bytes of `text` that was
std::size_t appendVisible(std::string& shown, std::string_view text) {
    const std::size_t length = utf8CharacterLength(text);
    if (length == 0) {
        appendHex(shown, text[0]);
        return 1;
    }
    if (startsWithUtf8C1(text)) {
        appendHex(shown, text[1]);
    } else if (isShownAsCaret(text[0])) {
        appendCaret(shown, static_cast<unsigned char>(text[0]));
    } else {
        shown += text.substr(0, length);
    }
    return length;
}

}  // namespace

std::string visibleText(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        text.remove_prefix(appendVisible(shown, text));
    }
    return shown;
}

}  // namespace arkeon
