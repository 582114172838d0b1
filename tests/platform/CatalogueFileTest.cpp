#include "catalogue/CatalogueFile.h"

#include "arkeon/catalogue.h"
#include "support/Environment.h"
#include "support/LogReader.h"
#include "support/TempDir.h"

#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

using arkeon::isSoundCatalogue;
using support::LogReader;
using support::ScopedVariable;
using support::TempDir;
using testing::EndsWith;

namespace {

/// A catalogue of one text in the words and strings of its form: a head of twelve words, two tables
/// of one entry (length, place), a hash table of three places, and the strings.
class Catalogue {
public:
    enum Word : std::size_t {
        magic,
        revision,
        count,
        originals,
        translations,
        hashSize,
        hashTable,
        systemSegments,
        systemSegmentTable,
        systemStrings,
        originalLength = 12,
        originalPlace,
        translationLength,
        translationPlace,
        hashes
    };

    std::string bytes() const {
        std::string all;
        for (const std::uint32_t word : words) {
            for (unsigned shift = 0; shift < 32; shift += 8) {
                all += static_cast<char>(word >> (bigEndian ? 24 - shift : shift));
            }
        }
        return all + strings;
    }

    /// Whether the catalogue is sound with another value for a word.
    bool isSoundWith(Word word, std::uint32_t value) const {
        Catalogue other = *this;
        other.words[word] = value;
        return isSoundCatalogue(other.bytes());
    }

    std::vector<std::uint32_t> words = {0x950412de, 0, 1, 48, 56, 3,  64, 0, 0, 0,
                                        0,          0, 4, 76, 4,  81, 1,  0, 0};
    std::string strings = std::string("c\4ab\0text\0", 10);
    bool bigEndian = false;
};

TEST(CatalogueFile, BothByteOrdersAndRevisionsAreSound) {
    Catalogue catalogue;
    EXPECT_TRUE(isSoundCatalogue(catalogue.bytes()));
    EXPECT_TRUE(catalogue.isSoundWith(Catalogue::revision, 1));
    EXPECT_TRUE(catalogue.isSoundWith(Catalogue::revision, 0x10000));
    EXPECT_TRUE(catalogue.isSoundWith(Catalogue::hashSize, 0));
    catalogue.bigEndian = true;
    EXPECT_TRUE(isSoundCatalogue(catalogue.bytes()));
}

TEST(CatalogueFile, NothingMayBeMissingAtItsEnd) {
    const std::string whole = Catalogue().bytes();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(isSoundCatalogue(whole.substr(0, size))) << size;
    }
}

TEST(CatalogueFile, HeadThatIsNone) {
    const Catalogue catalogue;
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::magic, 0x950412df));
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::revision, 0x20000));
}

TEST(CatalogueFile, StringsOfTheSystem) {
    Catalogue catalogue;
    catalogue.words[Catalogue::systemStrings] = 1;
    EXPECT_TRUE(isSoundCatalogue(catalogue.bytes())) << "revision 0 has none";
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::revision, 1));
}

TEST(CatalogueFile, PlacesOutsideOfTheFile) {
    const Catalogue catalogue;
    for (const std::uint32_t far : {0x7FFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFF8U}) {
        for (const Catalogue::Word word :
             {Catalogue::count, Catalogue::originals, Catalogue::translations, Catalogue::hashSize,
              Catalogue::hashTable, Catalogue::originalLength, Catalogue::originalPlace,
              Catalogue::translationLength, Catalogue::translationPlace}) {
            EXPECT_FALSE(catalogue.isSoundWith(word, far)) << word << ' ' << far;
        }
    }
}

TEST(CatalogueFile, StringWithoutItsEnd) {
    const Catalogue catalogue;
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::originalLength, 3));
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::translationPlace, 80));
}

TEST(CatalogueFile, HashTableThatALookUpCannotLeave) {
    Catalogue catalogue;
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::hashes, 2)) << "there is no second string";
    EXPECT_FALSE(catalogue.isSoundWith(Catalogue::hashSize, 4)) << "no prime";
    catalogue.words[Catalogue::hashes + 1] = 1;
    EXPECT_TRUE(isSoundCatalogue(catalogue.bytes()));
    catalogue.words[Catalogue::hashes + 2] = 1;
    EXPECT_FALSE(isSoundCatalogue(catalogue.bytes())) << "full";
}

TEST(CatalogueFile, LargestSize) {
    std::string bytes = Catalogue().bytes();
    bytes.resize(arkeon::largestCatalogue);
    EXPECT_TRUE(isSoundCatalogue(bytes));
    bytes += ' ';
    EXPECT_FALSE(isSoundCatalogue(bytes));
}

/// A root folder with a sound catalogue of the language `xx`, which is asked for.
class DamagedCatalogueTest : public testing::Test {
protected:
    DamagedCatalogueTest()
        : rootVariable_("ARKEON_ROOT", root_.path()), all_("LC_ALL", "C.UTF-8"),
          language_("LANGUAGE", "xx") {
        Catalogue catalogue;
        catalogue.words[Catalogue::hashSize] = 0;  // without places that fit no hash
        root_.write(pathOf("xx"), catalogue.bytes());
    }

    static std::string pathOf(const std::string& language) {
        return "locale/" + language + "/LC_MESSAGES/akhostmgmt.mo";
    }

    static std::string text() {
        zvlocale locale{};
        int status = -1;
        zvgetlocaleEx(&locale, &status);
        std::array<char, 16> buffer{};
        zvgetmsg("c", locale, buffer.data(), buffer.size(), "ab");
        return buffer.data();
    }

    void expectEnglishFor(const std::string& path, const std::string& reason) {
        EXPECT_EQ(text(), "ab");
        EXPECT_THAT(
            log_.text(), EndsWith(
                             " 16 arkeon: " + root_.file(path) + ": " + reason +
                             "; texts are not translated\n"));
    }

    TempDir root_;
    LogReader log_;

private:
    ScopedVariable rootVariable_;
    ScopedVariable all_;
    ScopedVariable language_;
};

TEST_F(DamagedCatalogueTest, SoundOnesAreUsed) {
    root_.write("locale/yy/other", "");
    root_.write("locale/file", "");
    EXPECT_EQ(text(), "text");
    EXPECT_EQ(log_.text(), "");
}

TEST_F(DamagedCatalogueTest, OneThatIsCutShortIsNamedAndNoneIsUsed) {
    root_.write(pathOf("xx"), Catalogue().bytes().substr(0, 70));
    expectEnglishFor(pathOf("xx"), "not a sound catalogue");
}

TEST_F(DamagedCatalogueTest, AlsoThatOfAnotherLanguage) {
    root_.write(pathOf("yy"), "");
    expectEnglishFor(pathOf("yy"), "not a sound catalogue");
}

TEST_F(DamagedCatalogueTest, NoWriterOfAFifoIsWaitedFor) {
    std::filesystem::remove(root_.file(pathOf("xx")));
    ASSERT_EQ(mkfifo(root_.file(pathOf("xx")).c_str(), 0600), 0);
    expectEnglishFor(pathOf("xx"), "not a regular file");
}

TEST_F(DamagedCatalogueTest, FolderOfLanguagesMayBeMissing) {
    std::filesystem::remove_all(root_.file("locale"));
    EXPECT_EQ(text(), "ab");
    EXPECT_EQ(log_.text(), "");
}

TEST_F(DamagedCatalogueTest, FolderOfLanguagesThatCannotBeRead) {
    std::filesystem::remove_all(root_.file("locale"));
    std::filesystem::create_directory_symlink("locale", root_.file("locale"));
    expectEnglishFor("locale", "Too many levels of symbolic links");
}

TEST_F(DamagedCatalogueTest, InTheCLocaleNoneIsLookedAt) {
    root_.write(pathOf("xx"), "");
    const ScopedVariable all("LC_ALL", "C");
    EXPECT_EQ(text(), "ab");
    EXPECT_EQ(log_.text(), "");
}

}  // namespace
