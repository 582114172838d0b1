#include "catalogue/CatalogueFile.h"

#include "config/ReadFile.h"
#include "log/Report.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>

namespace arkeon {
namespace {

/// The places of the head's words that are looked at.
enum Head : std::size_t {
    magic = 0,
    revision = 4,
    stringCount = 8,
    originals = 12,
    translations = 16,
    hashSize = 20,
    hashTable = 24,
    systemStringCount = 36,
    headSize = 48,
};

bool isPrime(std::uint32_t number) {
    for (std::uint64_t divisor = 2; divisor * divisor <= number; ++divisor) {
        if (number % divisor == 0) {
            return false;
        }
    }
    return number > 1;
}

/// Holds the bytes against everything that a look-up relies on.
class Checker {
public:
    explicit Checker(std::string_view bytes) : bytes_(bytes) {}

    bool isSound();

private:
    bool readByteOrder();
    bool isRevisionKnown() const;
    bool areStringsSound(Head table) const;
    bool isStringSound(std::size_t entry) const;
    bool isHashTableSound() const;
    std::uint32_t word(std::size_t place) const;
    bool isInside(std::uint64_t place, std::uint64_t size) const {
        return place + size <= bytes_.size();
    }

    static constexpr std::size_t wordSize = 4;
    static constexpr std::size_t entrySize = 2 * wordSize;
    std::string_view bytes_;
    bool bigEndian_ = false;
};

bool Checker::isSound() {
    return bytes_.size() <= largestCatalogue && isInside(0, headSize) && readByteOrder() &&
           isRevisionKnown() && areStringsSound(originals) && areStringsSound(translations) &&
           isHashTableSound();
}

std::uint32_t Checker::word(std::size_t place) const {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < wordSize; ++i) {
        const std::size_t byte = place + (bigEndian_ ? i : wordSize - 1 - i);
        value = (value << 8U) | static_cast<unsigned char>(bytes_[byte]);
    }
    return value;
}

bool Checker::readByteOrder() {
    constexpr std::uint32_t magicNumber = 0x950412de;
    bigEndian_ = word(magic) != magicNumber;
    return word(magic) == magicNumber;
}

bool Checker::isRevisionKnown() const {
    const std::uint32_t major = word(revision) >> 16U;
    const std::uint32_t minor = word(revision) & 0xFFFFU;
    return major <= 1 && (minor == 0 || word(systemStringCount) == 0);
}

bool Checker::areStringsSound(Head table) const {
    const std::uint64_t count = word(stringCount);
    if (!isInside(word(table), count * entrySize)) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!isStringSound(word(table) + i * entrySize)) {
            return false;
        }
    }
    return true;
}

bool Checker::isStringSound(std::size_t entry) const {
    const std::uint64_t length = word(entry);
    const std::uint64_t place = word(entry + wordSize);
    return isInside(place, length + 1) && bytes_[place + length] == '\0';
}

/// A look-up goes through the table by steps until it finds an empty place: there has to be one,
/// and it has to come by it, which a prime size makes sure of.
bool Checker::isHashTableSound() const {
    const std::uint32_t size = word(hashSize);
    constexpr std::uint32_t largestUnused = 2;
    if (size <= largestUnused) {
        return true;
    }
    if (!isInside(word(hashTable), std::uint64_t{size} * wordSize) || !isPrime(size)) {
        return false;
    }
    bool hasEmptyPlace = false;
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint32_t number = word(word(hashTable) + i * wordSize);
        hasEmptyPlace = hasEmptyPlace || number == 0;
        if (number > word(stringCount)) {
            return false;
        }
    }
    return hasEmptyPlace;
}

bool refuse(const std::string& path, std::string_view reason) {
    report({path, ": ", reason, "; texts are not translated"});
    return false;
}

bool isSoundFile(const std::string& path) {
    const FileContent file = readFile(path, largestCatalogue);
    if (file.error != 0) {
        return isMissingFile(file.error) || refuse(path, file.reason);
    }
    return isSoundCatalogue(file.text) || refuse(path, "not a sound catalogue");
}

bool lookThrough(const std::string& directory, const std::string& domain) {
    using std::filesystem::directory_iterator;
    bool sound = true;
    std::error_code failure;
    directory_iterator languages(directory, failure);
    for (; !failure && languages != directory_iterator(); languages.increment(failure)) {
        sound = isSoundFile(languages->path() / "LC_MESSAGES" / (domain + ".mo")) && sound;
    }
    return !failure || isMissingFile(failure.value()) ? sound
                                                      : refuse(directory, failure.message());
}

}  // namespace

bool isSoundCatalogue(std::string_view bytes) {
    return Checker(bytes).isSound();
}

bool cataloguesAreSound(const std::string& directory, const std::string& domain) {
    static std::map<std::string, bool> known;
    const auto [place, unknown] = known.try_emplace(directory + '/' + domain, true);
    if (unknown) {
        place->second = lookThrough(directory, domain);
    }
    return place->second;
}

}  // namespace arkeon
