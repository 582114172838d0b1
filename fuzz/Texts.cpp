// Any text, after a byte that is a limit, and a second text up to a NUL: what terminals are shown,
// where texts are cut, what is UTF-8 and which server names are the same. Two implementations, the
// platform's and the development server's, and jansson's, have to agree.

#include "arkeon/console.h"
#include "arkeon/text.h"
#include "cmdframework/CaseInsensitive.h"
#include "devserver/Text.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"
#include "text/ServerNames.h"

#include <algorithm>
#include <jansson.h>
#include <vector>

using fuzz::expect;

namespace {

std::string upToNul(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

void expectUtf8(const std::string& text) {
    json_t* json = json_stringn(text.data(), text.size());
    expect(arkeon::isUtf8(text) == (json != nullptr), "jansson finds the same texts UTF-8");
    json_decref(json);
    const bool plain = arkeon::isUtf8(text) && fuzz::isFreeOfControls(text);
    expect(devserver::text::isPlain(text) == plain, "the development server does, too");
}

void expectVisible(const std::string& text) {
    const std::string shown = arkeon::visibleText(text);
    expect(arkeon::isUtf8(shown), "a terminal is shown UTF-8");
    expect(fuzz::isFreeOfControls(shown, "\n\t"), "a terminal is shown no control character");
    expect(arkeon::visibleText(shown) == shown, "what is visible stays as it is");
    if (arkeon::isUtf8(text) && fuzz::isFreeOfControls(text, "\n\t")) {
        expect(shown == text, "a plain text stays as it is");
    }
    expect(devserver::text::isPlain(devserver::text::visible(text)), "the server's log is plain");
}

/// The buffer is as large as it says and no larger, so that the sanitizer sees its end.
void expectCopies(const std::string& text, std::size_t limit) {
    std::vector<char> buffer(limit + 1, 'x');
    const std::size_t length = arkeon::boundedCopy(buffer.data(), buffer.size(), text);
    expect(std::string(buffer.data(), length) == arkeon::cutText(text, limit), "a copy is cut");
    expect(buffer[length] == '\0', "a copy is terminated");
    const std::size_t cString = std::string(buffer.data()).size();
    const std::size_t whole = arkeon::boundedAppend(buffer.data(), buffer.size(), text);
    expect(whole >= cString && whole <= limit && buffer[whole] == '\0', "so is what is appended");
    const std::string plain = upToNul(text);
    const std::size_t formatted =
        arkeon::boundedFormat(buffer.data(), buffer.size(), "%s", plain.c_str());
    expect(
        std::string(buffer.data(), formatted) == arkeon::cutText(plain, limit),
        "so is what is formatted");
}

void expectCut(const std::string& text, std::size_t limit) {
    const std::string_view cut = arkeon::cutText(text, limit);
    expect(text.starts_with(cut) && cut.size() <= limit, "a cut leaves a beginning");
    expect(cut.size() == text.size() || cut.size() + 3 >= limit, "it takes no more than a letter");
    expect(!arkeon::isUtf8(text) || arkeon::isUtf8(cut), "it splits none");
    expectCopies(text, limit);
}

std::string upperAscii(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return text;
}

void expectNames(const std::string& one, const std::string& other) {
    const bool same = arkeon::sameServer(one, other);
    expect(arkeon::sameServer(one, one), "a server is itself");
    expect(arkeon::sameServer(other, one) == same, "it does not matter which is first");
    expect(arkeon::sameServer(upperAscii(one), other) == same, "nor does the letter case");
    expect(one.starts_with('[') || arkeon::sameServer("[" + one + "]", one), "nor do brackets");
    const int order = compareIgnoringCase(one.c_str(), other.c_str());
    expect(
        (compareIgnoringCase(other.c_str(), one.c_str()) > 0) == (order < 0),
        "names have an order");
    expect(
        equalIgnoringCase(one, other) == devserver::text::equalIgnoringCase(one, other),
        "both implementations compare alike");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t limit = input.byte();
    const std::string other = input.text();
    const std::string text = input.rest();
    expectUtf8(text);
    expectVisible(text);
    expectCut(text, limit);
    expectNames(upToNul(text), other);
    return 0;
}
