// A translation, after a byte that chooses what it translates: where its placeholders are said to
// fit, the C library reads the same arguments from it.

#include "catalogue/Placeholders.h"
#include "arkeon/text.h"
#include "fuzz/Input.h"
#include "fuzz/Property.h"

#include <array>
#include <iterator>
#include <printf.h>
#include <string>
#include <vector>

using fuzz::expect;

namespace {

const char* const defaults[] = {"text", "100%%",    "%s",     "%s and %s",
                                "%d",   "%s is %d", "%lu %s", "%s%s%s%s%s%s%s%s%s"};

constexpr std::size_t maxArguments = 16;

struct Arguments {
    std::size_t count = 0;
    std::array<int, maxArguments> types{};

    bool operator==(const Arguments&) const = default;
};

Arguments argumentsOf(const char* format) {
    Arguments arguments;
    arguments.count = parse_printf_format(format, maxArguments, arguments.types.data());
    return arguments;
}

template <typename... Values>
void format(const char* text, Values... values) {
    for (const std::size_t room : {1U, 7U, 64U}) {
        std::vector<char> buffer(room, 'x');
        const std::size_t length =
            arkeon::boundedFormat(buffer.data(), buffer.size(), text, values...);
        expect(length < room && buffer[length] == '\0', "a message is terminated");
    }
}

/// The arguments that the default has.
void formatWith(std::size_t choice, const char* text) {
    constexpr const char* s = "\xc3\xa4\xe2\x82\xac";
    switch (choice) {
    case 0:
    case 1:
        return format(text, 0);
    case 2:
        return format(text, s);
    case 3:
        return format(text, s, s);
    case 4:
        return format(text, -1);
    case 5:
        return format(text, s, -1);
    case 6:
        return format(text, 1UL, s);
    default:
        return format(text, s, s, s, s, s, s, s, s, s);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t choice = input.byte() % std::size(defaults);
    const std::string translation = input.text();
    if (arkeon::placeholdersFit(defaults[choice], translation.c_str())) {
        expect(
            argumentsOf(translation.c_str()) == argumentsOf(defaults[choice]),
            "a translation that fits takes the arguments of the default");
        formatWith(choice, translation.c_str());
    }
    return 0;
}
