#include "catalogue/CatalogueFile.h"

#include "config/ReadFile.h"
#include "log/Report.h"

#include <byteswap.h>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

namespace arkeon {
namespace {

constexpr std::uint32_t magic = 0x950412de;
constexpr std::uint64_t numberSize = sizeof(std::uint32_t);
constexpr std::uint64_t descriptorSize = 2 * numberSize;

bool isPrime(std::uint32_t number) {
    for (std::uint64_t divisor = 2; divisor * divisor <= number; ++divisor) {
        if (number % divisor == 0) {
            return false;
        }
    }
    return number > 1;
}

/// The file's numbers in the order of their bytes that its first number tells.
class CatalogueReader {
public:
    explicit CatalogueReader(std::string_view content) : content_(content) {}

    bool isSound() {
        constexpr std::uint64_t headSize = 7 * numberSize;
        if (content_.size() < headSize || !knowsByteOrder() || !isKnownRevision()) {
            return false;
        }
        const std::uint32_t texts = number(2 * numberSize);
        return hasTexts(texts, number(3 * numberSize)) && hasTexts(texts, number(4 * numberSize)) &&
               hasHashTable(texts, number(5 * numberSize), number(6 * numberSize));
    }

private:
    bool knowsByteOrder() {
        swapped_ = number(0) == bswap_32(magic);
        return number(0) == magic;
    }

    /// Of 0.0 and 1.0, which have the same form; the minor revision 1 has system-dependent strings.
    bool isKnownRevision() const {
        const std::uint32_t revision = number(numberSize);
        return revision == 0 || revision == 0x10000;
    }

    std::uint32_t number(std::uint64_t offset) const {
        std::uint32_t value = 0;
        std::memcpy(&value, content_.data() + offset, sizeof value);
        return swapped_ ? bswap_32(value) : value;
    }

    bool holds(std::uint64_t offset, std::uint64_t size) const {
        return offset + size <= content_.size();
    }

    bool hasTexts(std::uint64_t count, std::uint64_t table) const {
        if (table % numberSize != 0 || !holds(table, count * descriptorSize)) {
            return false;
        }
        for (std::uint64_t row = 0; row < count; ++row) {
            const std::uint64_t length = number(table + row * descriptorSize);
            const std::uint64_t text = number(table + row * descriptorSize + numberSize);
            if (!holds(text, length + 1) || content_[text + length] != '\0') {
                return false;
            }
        }
        return true;
    }

    /// A search goes on to the first empty place, in steps that reach every place of a table whose
    /// size is a prime number. gettext takes a table of at most two places as none.
    bool hasHashTable(std::uint32_t texts, std::uint32_t size, std::uint64_t table) const {
        if (size <= 2) {
            return true;
        }
        if (table % numberSize != 0 || !holds(table, size * numberSize) || !isPrime(size)) {
            return false;
        }
        bool hasEmptyPlace = false;
        for (std::uint64_t place = 0; place < size; ++place) {
            const std::uint32_t text = number(table + place * numberSize);
            if (text > texts) {
                return false;
            }
            hasEmptyPlace = hasEmptyPlace || text == 0;
        }
        return hasEmptyPlace;
    }

    std::string_view content_;
    bool swapped_ = false;
};

bool isSoundOrMissing(const std::string& path) {
    const FileContent file = readFile(path);
    if (file.error == ENOENT || file.error == ENOTDIR) {
        return true;
    }
    if (file.error != 0) {
        report({path, ": ", file.reason});
        return false;
    }
    const bool isSound = isCatalogue(file.text);
    if (!isSound) {
        report({path, ": not a message catalogue"});
    }
    return isSound;
}

}  // namespace

bool isCatalogue(std::string_view content) {
    return CatalogueReader(content).isSound();
}

bool cataloguesAreSound(const std::string& localeFolder) {
    std::error_code error;
    std::filesystem::directory_iterator folders(localeFolder, error);
    bool areSound = true;
    for (; !error && folders != std::filesystem::directory_iterator(); folders.increment(error)) {
        const auto path = folders->path() / "LC_MESSAGES" / "akhostmgmt.mo";
        areSound = isSoundOrMissing(path.string()) && areSound;
    }
    return areSound;
}

}  // namespace arkeon
