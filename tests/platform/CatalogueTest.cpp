#include "arkeon/catalogue.h"

#include "arkeon/status.h"
#include "arkeon/status_table.h"
#include "catalogue/Placeholders.h"
#include "devserver/Reply.h"
#include "support/Environment.h"
#include "support/TempDir.h"

#include <array>
#include <clocale>
#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <vector>

using arkeon::placeholdersFit;
using support::ScopedVariable;
using support::TempDir;

namespace {

TEST(Placeholders, TranslationsThatFit) {
    for (const auto& [original, translation] : std::array<std::pair<const char*, const char*>, 18>{
             {{"text", "Text"},
              {"100%%", "%%100"},
              {"%s", "<%s>"},
              {"%s and %s", "%s und %s"},
              {"%s and %s", "%2$s und %1$s"},
              {"%2$s and %1$s", "%s und %s"},
              {"%s is %d", "%2$d ist %1$s"},
              {"%d", "%i"},
              {"%d", "%5d"},
              {"%s", "%-10.3s"},
              {"%lu", "%lu"},
              {"%ld%%", "%% %ld"},
              {"%c%p%zu%x", "%c%p%zu%x"},
              {"%d", "%999d"},
              {"%s", "%.999s"},
              {"%d$", "%d$"},
              {"%s$", "<%s$>"},
              {"%s%s%s%s%s%s%s%s%s", "%9$s%8$s%7$s%6$s%5$s%4$s%3$s%2$s%1$s"}}}) {
        EXPECT_TRUE(placeholdersFit(original, translation)) << original << " | " << translation;
    }
}

TEST(Placeholders, TranslationsThatDoNotFit) {
    for (const auto& [original, translation] : std::array<std::pair<const char*, const char*>, 38>{
             {{"text", "%s"},
              {"%s", "text"},
              {"%s", "%s %s"},
              {"%s %s", "%s"},
              {"%s", "%d"},
              {"%d", "%ld"},
              {"%lu", "%u"},
              {"%d", "%u"},
              {"%s is %d", "%d ist %s"},
              {"%s is %d", "%1$d ist %2$s"},
              {"%s %s", "%1$s %1$s"},
              {"%s %s", "%1$s %2$s %1$s"},
              {"%s %s", "%2$s"},
              {"%s %s", "%1$s %3$s"},
              {"%s %s", "%1$s %s"},
              {"%s %s", "%s %2$s"},
              {"%s", "%0$s"},
              {"%s", "%n"},
              {"%s", "%s%n"},
              {"%d", "%*d"},
              {"%s", "%.*s"},
              {"%s", "%9999s"},
              {"%s", "%.9999s"},
              {"%s", "%"},
              {"%s", "%s %"},
              {"%s", "%l"},
              {"%s", "%y"},
              {"%m", "%m"},
              {"%ld", "%hd"},
              {"%d", "%1000d"},
              // What is no format does not fit itself either.
              {"%l", "%l"},
              {"%", "%"},
              {"%1000d", "%1000d"},
              {"%.1000s", "%.1000s"},
              {"%1$s %s", "%1$s %s"},
              {"%s %2$s", "%s %2$s"},
              {"%1$s %1$s", "%1$s %1$s"},
              {"%s%s%s%s%s%s%s%s%s%s", "%s%s%s%s%s%s%s%s%s%s"}}}) {
        EXPECT_FALSE(placeholdersFit(original, translation)) << original << " | " << translation;
    }
}

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

/// A root folder with a catalogue for the language `xx`, and an environment that asks for it.
class CatalogueTest : public testing::Test {
public:
    ~CatalogueTest() override { std::setlocale(LC_ALL, "C"); }

protected:
    CatalogueTest()
        : root_("ARKEON_ROOT", folder_.path()), all_("LC_ALL", "C.UTF-8"),
          language_("LANGUAGE", "xx") {}

    void add(const std::string& context, const std::string& key, const std::string& translation) {
        entries_ += "msgctxt " + quoted(context) + "\nmsgid " + quoted(key) + "\nmsgstr " +
                    quoted(translation) + "\n\n";
    }

    void compile(const std::string& charset = "UTF-8") {
        const std::string header =
            "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=" + charset + "\\n\"\n\n";
        const std::string source = folder_.write("xx.po", header + entries_);
        const std::string target = folder_.file("locale/xx/LC_MESSAGES/akhostmgmt.mo");
        std::filesystem::create_directories(std::filesystem::path(target).parent_path());
        const std::string command = std::string(MSGFMT) + " -o '" + target + "' '" + source + "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
        readLocale();
    }

    void readLocale() {
        int status = -1;
        EXPECT_EQ(zvgetlocaleEx(&locale_, &status), 0);
        EXPECT_EQ(status, 0);
    }

    template <typename... Arguments>
    std::string message(const char* id, const char* text, Arguments... arguments) {
        EXPECT_EQ(zvgetmsg(id, locale_, buffer_.data(), buffer_.size(), text, arguments...), 0);
        return buffer_.data();
    }

    TempDir folder_;
    zvlocale locale_{};
    std::array<char, 64> buffer_{};
    ScopedVariable root_;
    ScopedVariable all_;
    ScopedVariable language_;

private:
    std::string entries_;
};

TEST_F(CatalogueTest, TextIsLookedUpByContextAndKey) {
    add("SmeHmm0003N", "%s is mapped to %s.", "%s gehört zu %s.");
    add("SmeHmm0004N", "%s is mapped to %s.", "other context");
    compile();
    EXPECT_EQ(message("SmeHmm0003N", "%s is mapped to %s.", "a", "b"), "a gehört zu b.");
    EXPECT_EQ(message("SmeHmm0009N", "%s is mapped to %s.", "a", "b"), "a is mapped to b.");
    EXPECT_EQ(message("SmeHmm0003N", "%s is mapped to: %s", "a", "b"), "a is mapped to: b");
}

TEST_F(CatalogueTest, PositionalFormsChangeTheOrder) {
    add("Id", "%s is mapped to %s.", "%2$s has the name %1$s.");
    compile();
    EXPECT_EQ(message("Id", "%s is mapped to %s.", "a", "b"), "b has the name a.");
}

TEST_F(CatalogueTest, TranslationWhosePlaceholdersDoNotFitIsNotUsed) {
    add("One", "%s is mapped.", "mapped: %s %s");
    add("Two", "%s is mapped.", "mapped: %d");
    add("Three", "number %d", "%n %n %n");
    add("Four", "plain", "%s");
    compile();
    EXPECT_EQ(message("One", "%s is mapped.", "a"), "a is mapped.");
    EXPECT_EQ(message("Two", "%s is mapped.", "a"), "a is mapped.");
    EXPECT_EQ(message("Three", "number %d", 7), "number 7");
    EXPECT_EQ(message("Four", "plain", ""), "plain");
}

TEST_F(CatalogueTest, TextsAreUtf8WhateverTheCatalogueIsWrittenIn) {
    add("Id", "text", "gr\xfc\xdf");
    compile("ISO-8859-1");
    EXPECT_EQ(message("Id", "text", ""), "gr\xc3\xbc\xc3\x9f");
}

TEST_F(CatalogueTest, LongTextIsCutWithoutSplittingALetter) {
    add("Id", "%s", "%sääää");
    compile();
    const std::string most(60, 'x');
    EXPECT_EQ(message("Id", "%s", most.c_str()), most + "\xc3\xa4");
}

TEST_F(CatalogueTest, WithoutACatalogueTheDefaultIsUsed) {
    readLocale();
    EXPECT_EQ(message("Id", "%s and %d", "text", 1), "text and 1");
}

TEST_F(CatalogueTest, DefaultWithAConversionThatNoTranslationMayHaveIsUsedAsItIs) {
    add("Id", "%*d", "%*d translated");
    compile();
    EXPECT_EQ(message("Id", "%*d", 3, 7), "  7");
}

TEST_F(CatalogueTest, LocaleWithoutLanguageGivesTheDefault) {
    add("Id", "text", "Text");
    compile();
    EXPECT_EQ(message("Id", "text", ""), "Text");
    const ScopedVariable plain("LC_ALL", "C");
    readLocale();
    EXPECT_EQ(message("Id", "text", ""), "text");
}

TEST_F(CatalogueTest, LocaleOfTheCallCounts) {
    add("Id", "text", "Text");
    compile();
    std::setlocale(LC_MESSAGES, "C");
    EXPECT_EQ(message("Id", "text", ""), "Text");
}

TEST_F(CatalogueTest, LocaleComesFromTheEnvironmentTheUsualWay) {
    readLocale();
    EXPECT_STREQ(locale_.messages, "C.UTF-8");
    EXPECT_STREQ(locale_.characters, "C.UTF-8");
    const ScopedVariable all("LC_ALL", std::nullopt);
    const ScopedVariable messages("LC_MESSAGES", "C.UTF-8");
    const ScopedVariable characters("LC_CTYPE", std::nullopt);
    const ScopedVariable lang("LANG", "POSIX");
    readLocale();
    EXPECT_STREQ(locale_.messages, "C.UTF-8");
    EXPECT_STREQ(locale_.characters, "C");
    const ScopedVariable noMessages("LC_MESSAGES", std::nullopt);
    const ScopedVariable utf8("LANG", "C.UTF-8");
    readLocale();
    EXPECT_STREQ(locale_.messages, "C.UTF-8");
    EXPECT_STREQ(locale_.characters, "C.UTF-8");
}

TEST_F(CatalogueTest, LocaleThatTheSystemDoesNotHaveCountsAsC) {
    const ScopedVariable all("LC_ALL", "xx_YY.UTF-8");
    std::setlocale(LC_MESSAGES, "C.UTF-8");
    readLocale();
    EXPECT_STREQ(locale_.messages, "C");
    EXPECT_STREQ(locale_.characters, "C");
}

TEST_F(CatalogueTest, OtherCategoriesStayAsTheyAre) {
    readLocale();
    for (const int category : {LC_NUMERIC, LC_TIME, LC_COLLATE, LC_MONETARY}) {
        EXPECT_STREQ(std::setlocale(category, nullptr), "C");
    }
}

TEST_F(CatalogueTest, StatusTextsAreTranslated) {
    const std::string english = getECmsgl(arkeon::status::unreadableReply, zvlocale{"C", "C"});
    add("Status7610", english, "Unverständliche Antwort, 100 % sicher.");
    add("StatusUnknown",
        "The operation failed with status %d; the debug log has the server's message, and the "
        "server's documentation may explain this code.",
        "Status %d");
    compile();
    EXPECT_STREQ(getECmsgl(7610, locale_), "Unverständliche Antwort, 100 % sicher.");
    EXPECT_STREQ(getECmsgl(4711, locale_), "Status 4711");
    EXPECT_STREQ(getECmsgl(7620, locale_), getECmsgl(7620, zvlocale{"C", "C"}));
}

/// The codes of status.h, read from the header itself.
std::set<int> declaredCodes() {
    std::ifstream header(STATUS_HEADER);
    const std::string text{std::istreambuf_iterator<char>(header), {}};
    const std::regex declaration(R"( \w+ = (\d+),)");
    std::set<int> codes;
    for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end;
         ++match) {
        codes.insert(std::stoi((*match)[1]));
    }
    return codes;
}

TEST(StatusTexts, EveryCodeHasOneSentenceOfItsOwn) {
    const std::set<int> codes = declaredCodes();
    const std::set<int> required{0,    20,   37,   104,  117,  118,  144,  5930, 7610, 7620, 7621,
                                 7622, 7623, 7624, 7625, 7626, 7627, 7628, 7629, 7640, 7641, 7642,
                                 7643, 7644, 7650, 7651, 8614, 8701, 8702, 8703, 8705, 8706, 8707,
                                 8708, 8709, 8710, 8711, 8712, 8713, 8900, 8901, 8902};
    EXPECT_EQ(codes, required);
    const zvlocale plain{"C", "C"};
    // A full stop ends it; one in a number or in the name of a file does not.
    const std::regex sentence("[A-Z]([^.]|\\.[\\da-z])*\\.");
    std::set<std::string> seen;
    for (const int code : codes) {
        const std::string text = getECmsgl(code, plain);
        EXPECT_TRUE(std::regex_match(text, sentence)) << code << ' ' << text;
        EXPECT_TRUE(seen.insert(text).second) << code << ' ' << text;
        EXPECT_EQ(text.find("status"), std::string::npos) << code << ' ' << text;
    }
}

TEST(StatusTable, HasARowForEveryCodeInAscendingOrder) {
    std::vector<int> codes;
    for (const arkeon::StatusText& row : arkeon::statusTable()) {
        codes.push_back(row.code);
        EXPECT_EQ(row.context, "Status" + std::to_string(row.code));
        EXPECT_STREQ(row.message, getECmsgl(row.code, zvlocale{"C", "C"}));
    }
    EXPECT_THAT(codes, testing::ElementsAreArray(declaredCodes()));
}

std::set<int> codesWith(arkeon::Retry retry) {
    std::set<int> codes;
    for (const arkeon::StatusText& row : arkeon::statusTable()) {
        if (row.retry == retry) {
            codes.insert(row.code);
        }
    }
    return codes;
}

TEST(StatusTable, ARetryIsAdvisedOnlyWhereNothingReachedTheServer) {
    EXPECT_EQ(codesWith(arkeon::Retry::yes), (std::set{7620, 7621}));
}

TEST(StatusTable, AChangeIsInDoubtWhereTheRequestMayHaveReachedTheServer) {
    EXPECT_EQ(
        codesWith(arkeon::Retry::check), (std::set{20, 7610, 7622, 7625, 7628, 7629, 7651, 8713}));
}

TEST(StatusTexts, EveryErrorOfTheDevelopmentServerHasOne) {
    const std::set<int> codes = declaredCodes();
    for (const devserver::ErrorKind& kind : devserver::errors::all) {
        EXPECT_TRUE(codes.contains(static_cast<int>(kind.code))) << kind.code;
    }
}

TEST(StatusTexts, UnknownCodeIsNamed) {
    const zvlocale plain{"C", "C"};
    for (const int code : {1, 7630, -1, 2147483647}) {
        EXPECT_THAT(
            getECmsgl(code, plain), testing::HasSubstr("status " + std::to_string(code) + ";"));
    }
}

}  // namespace
