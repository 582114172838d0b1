// A text for the log, after a byte that says where it comes in two pieces (not within a letter), a
// byte that has it repeated to more than 64 KiB, and the program's name up to a NUL.

#include "arkeon/text.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "log/LogLine.h"

#include <algorithm>

using fuzz::expect;

namespace {

/// Whether the byte at this place belongs to a letter of UTF-8.
bool isInLetter(std::string_view text, std::size_t place) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(place, 3); ++back) {
        for (std::size_t length = back + 1; length <= 4; ++length) {
            const std::string_view letter = text.substr(place - back, length);
            if (static_cast<unsigned char>(letter.front()) >= 0xC0 && arkeon::isUtf8(letter)) {
                return true;
            }
        }
    }
    return false;
}

/// Control bytes of an 8-bit character set that stand for themselves.
bool hasLoneC1(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x80 && byte <= 0x9F && !isInLetter(text, i)) {
            return true;
        }
    }
    return false;
}

void expectLine(const std::string& line, const std::string& text) {
    expect(line.ends_with('\n'), "a line ends");
    const std::string_view inside = std::string_view(line).substr(0, line.size() - 1);
    expect(fuzz::isFreeOfControls(inside), "there is no control character in a line");
    expect(!hasLoneC1(inside), "nor one of an 8-bit character set");
    const std::size_t length = text.size() - (text.ends_with('\n') ? 1 : 0);
    const bool cut = length > arkeon::maxLogText;
    const std::string end = "... [cut, " + std::to_string(length) + " bytes in all]\n";
    expect(!cut || line.ends_with(end), "a line that is cut says so");
    if (!cut && arkeon::isUtf8(text)) {
        expect(arkeon::isUtf8(inside), "what was UTF-8 is UTF-8");
    }
    expect(line.size() <= 4 * arkeon::maxLogText + 2048, "no line is longer");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t longEnough = std::size_t{70} * 1024;
    constexpr unsigned often = 250;
    fuzz::Input input(data, size);
    const std::size_t split = input.byte();
    const std::size_t times = input.byte() < often ? 1 : longEnough;
    const std::string name = input.text().substr(0, 256);
    const std::string some = input.rest();
    std::string text;
    for (std::size_t i = 0; i < times && text.size() < longEnough; ++i) {
        text += some;
    }
    const std::string_view whole = text;
    const std::size_t first = arkeon::cutText(whole, split).size();
    const arkeon::LogStamp stamp{{static_cast<std::time_t>(split), 0}, 1, 2, name};
    const std::string line =
        arkeon::logLine(stamp, {whole.substr(0, first), "", whole.substr(first)});
    if (arkeon::isUtf8(name)) {
        expectLine(line, text);
    }
    expect(std::count(line.begin(), line.end(), '\n') == 1, "a text is one line");
    return 0;
}
