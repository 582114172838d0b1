#include "catalogue/CatalogueFile.h"

#include "support/LogReader.h"
#include "support/TempDir.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using arkeon::cataloguesAreSound;
using arkeon::isCatalogue;
using support::LogReader;
using support::TempDir;
using testing::HasSubstr;

namespace {

constexpr std::size_t numberSize = sizeof(std::uint32_t);

/// The places of the numbers in a catalogue's head.
enum Head : std::size_t { Magic, Revision, Count, Originals, Translations, HashSize, HashTable };

class CatalogueFileTest : public testing::Test {
protected:
    std::string compiled(const std::string& options = "", const std::string& key = "text") const {
        const std::string source = folder_.write(
            "xx.po", "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
                     "#, c-format\nmsgctxt \"One\"\nmsgid \"" +
                         key + "\"\nmsgstr \"" + key + "\"\n");
        const std::string target = folder_.file("xx.mo");
        const std::string command =
            std::string(MSGFMT) + " " + options + " -o '" + target + "' '" + source + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return support::contentOf(target);
    }

    static std::uint32_t number(const std::string& content, std::size_t place) {
        std::uint32_t value = 0;
        std::memcpy(&value, content.data() + place * numberSize, numberSize);
        return value;
    }

    static std::string with(std::string content, std::size_t place, std::uint32_t value) {
        std::memcpy(content.data() + place * numberSize, &value, numberSize);
        return content;
    }

    TempDir folder_;
};

TEST_F(CatalogueFileTest, WhatMsgfmtWritesIsSound) {
    for (const char* options :
         {"", "--no-hash", "--endianness=little", "--endianness=big", "--alignment=16"}) {
        EXPECT_TRUE(isCatalogue(compiled(options))) << options;
    }
}

TEST_F(CatalogueFileTest, SystemDependentStringsAreRefused) {
    EXPECT_FALSE(isCatalogue(compiled("", "%<PRIu64> bytes")));
}

TEST_F(CatalogueFileTest, CutAnywhereItIsRefused) {
    for (const char* options : {"--endianness=little", "--endianness=big", "--no-hash"}) {
        const std::string whole = compiled(options);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            EXPECT_FALSE(isCatalogue(whole.substr(0, size))) << options << " " << size;
        }
    }
}

TEST_F(CatalogueFileTest, HeadThatLeadsOutsideIsRefused) {
    const std::string whole = compiled();
    const auto end = static_cast<std::uint32_t>(whole.size());
    for (const std::size_t place : {Magic, Count, Originals, Translations, HashSize, HashTable}) {
        for (const std::uint32_t value :
             {end, 0x7fffffffU, 0x80000000U, 0xfffffffcU, 0xffffffffU}) {
            EXPECT_FALSE(isCatalogue(with(whole, place, value))) << place << " " << value;
        }
    }
}

TEST_F(CatalogueFileTest, RevisionsAreThoseOfTheSameForm) {
    const std::string whole = compiled();
    EXPECT_TRUE(isCatalogue(with(whole, Revision, 0x10000)));
    for (const std::uint32_t value : {1U, 0x10001U, 0x20000U, 0xffffffffU}) {
        EXPECT_FALSE(isCatalogue(with(whole, Revision, value))) << value;
    }
}

TEST_F(CatalogueFileTest, TablesStandAtWholeNumbers) {
    const std::string whole = compiled() + std::string(16, '\0');
    ASSERT_TRUE(isCatalogue(whole));
    for (const std::size_t place : {Originals, Translations, HashTable}) {
        EXPECT_FALSE(isCatalogue(with(whole, place, number(whole, place) + 1))) << place;
    }
}

TEST_F(CatalogueFileTest, TextsEndInsideWithANul) {
    const std::string whole = compiled();
    for (const std::size_t table : {Originals, Translations}) {
        const std::size_t length = number(whole, table) / numberSize + 2;
        const std::size_t text = length + 1;
        for (const std::uint32_t more : {1U, 0x7fffffffU, 0x80000000U}) {
            const std::string longer = with(whole, length, number(whole, length) + more);
            EXPECT_FALSE(isCatalogue(longer)) << more;
            EXPECT_FALSE(isCatalogue(with(whole, text, number(whole, text) + more))) << more;
        }
        EXPECT_FALSE(isCatalogue(with(whole, length, number(whole, length) - 1)));
    }
}

TEST_F(CatalogueFileTest, HashTableLeadsToTexts) {
    const std::string whole = compiled();
    const std::size_t table = number(whole, HashTable) / numberSize;
    const std::uint32_t texts = number(whole, Count);
    EXPECT_TRUE(isCatalogue(with(whole, table, texts)));
    EXPECT_FALSE(isCatalogue(with(whole, table, texts + 1)));
}

TEST_F(CatalogueFileTest, SearchesInTheHashTableEnd) {
    std::string whole = compiled();
    whole.append(numberSize - whole.size() % numberSize, '\0');
    const std::size_t table = whole.size() / numberSize;
    whole = with(whole, HashTable, static_cast<std::uint32_t>(whole.size())) +
            std::string(16 * numberSize, '\0');
    for (const std::uint32_t notPrime : {4U, 6U, 9U}) {
        EXPECT_FALSE(isCatalogue(with(whole, HashSize, notPrime))) << notPrime;
    }
    for (const std::uint32_t prime : {3U, 5U, 7U}) {
        std::string full = with(whole, HashSize, prime);
        for (std::size_t place = 0; place < prime; ++place) {
            full = with(full, table + place, 1);
        }
        EXPECT_FALSE(isCatalogue(full)) << prime;
        EXPECT_TRUE(isCatalogue(with(full, table + prime - 1, 0))) << prime;
    }
    EXPECT_TRUE(isCatalogue(with(whole, HashSize, 2))) << "which counts as no table";
}

TEST_F(CatalogueFileTest, OtherFilesAreRefused) {
    for (const std::string& content :
         {std::string(), std::string("text"), std::string(64, '\0'), std::string(1000, '\xff')}) {
        EXPECT_FALSE(isCatalogue(content));
    }
}

TEST_F(CatalogueFileTest, EveryLanguageCounts) {
    const LogReader log;
    EXPECT_TRUE(cataloguesAreSound(folder_.file("locale"))) << "there is none";
    folder_.write("locale/locale.alias", "a file among the folders");
    std::filesystem::create_directories(folder_.file("locale/empty"));
    folder_.write("locale/aa/LC_MESSAGES/akhostmgmt.mo", compiled());
    folder_.write("locale/aa/LC_MESSAGES/other.mo", "of another program");
    EXPECT_TRUE(cataloguesAreSound(folder_.file("locale")));
    EXPECT_EQ(log.text(), "");
    folder_.write("locale/bb/LC_MESSAGES/akhostmgmt.mo", "broken");
    EXPECT_FALSE(cataloguesAreSound(folder_.file("locale")));
    EXPECT_THAT(log.text(), HasSubstr("/bb/LC_MESSAGES/akhostmgmt.mo: not a message catalogue"));
}

TEST_F(CatalogueFileTest, NoFileIsWaitedFor) {
    const LogReader log;
    const std::string folder = folder_.file("locale/aa/LC_MESSAGES");
    std::filesystem::create_directories(folder);
    ASSERT_EQ(mkfifo((folder + "/akhostmgmt.mo").c_str(), 0600), 0);
    EXPECT_FALSE(cataloguesAreSound(folder_.file("locale")));
    EXPECT_THAT(log.text(), HasSubstr("akhostmgmt.mo: not a regular file"));
}

}  // namespace
