// Prints the messages of compiled catalogues that the tool would not use; fails if there are any.

#include "catalogue/Placeholders.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string content(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The messages of a catalogue that msgfmt compiled on this machine, in this byte order.
class Catalogue {
public:
    explicit Catalogue(const std::string& bytes) : bytes_(bytes) {}

    std::size_t size() const { return word(stringCount); }
    const char* original(std::size_t index) const { return text(word(originals), index); }
    const char* translation(std::size_t index) const { return text(word(translations), index); }

private:
    const char* text(std::size_t table, std::size_t index) const {
        constexpr std::size_t entrySize = 8;
        constexpr std::size_t placeInEntry = 4;
        return bytes_.data() + word(table + index * entrySize + placeInEntry);
    }

    std::uint32_t word(std::size_t place) const {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes_.data() + place, sizeof value);
        return value;
    }

    static constexpr std::size_t stringCount = 8;
    static constexpr std::size_t originals = 12;
    static constexpr std::size_t translations = 16;
    const std::string& bytes_;
};

/// The number of texts that do not fit, each printed with its context.
int countUnfit(const char* path) {
    const std::string bytes = content(path);
    const Catalogue catalogue(bytes);
    int unfit = 0;
    for (std::size_t i = 0; i < catalogue.size(); ++i) {
        const std::string original = catalogue.original(i);
        const std::size_t contextEnd = original.find('\4');
        const bool isHead = original.empty();
        const char* key = catalogue.original(i) + (isHead ? 0 : contextEnd + 1);
        if (!isHead && !arkeon::placeholdersFit(key, catalogue.translation(i))) {
            std::printf(
                "%s: %s: the tool would not use: %s\n", path,
                original.substr(0, contextEnd).c_str(), catalogue.translation(i));
            ++unfit;
        }
    }
    return unfit;
}

}  // namespace

int main(int argc, char** argv) {
    int unfit = 0;
    for (int i = 1; i < argc; ++i) {
        unfit += countUnfit(argv[i]);
    }
    return unfit == 0 && argc > 1 ? 0 : 1;
}
