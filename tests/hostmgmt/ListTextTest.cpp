#include "hostmgmt/listing/ListText.h"

#include "hostmgmt/Json.h"
#include "hostmgmt/listing/ListLabels.h"
#include "support/Environment.h"
#include "support/Streams.h"
#include "support/TempDir.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

constexpr const char* everyLabel[] = {
    "Host ID",
    "Mapped Names",
    "Host",
    "Master Server",
    "OS Type",
    "Operating System",
    "Arkeon EEBs",
    "Arkeon Packages",
    "QxUpdate Platform",
    "Hardware Description",
    "CPU Architecture",
    "Version",
    "Secure",
    "Mapped Host Name",
    "Approved",
    "Conflict",
    "Auto-discovered",
    "Shared",
    "Created On",
    "Last Updated On",
    "Yes",
    "No",
    "Comment",
    "Allow Auto Reissue Certificate",
    "Allow Auto Reissue Certificate Validity",
    "Subject Name of External Certificate",
    "Arkeon CA Issued Certificate",
    "Trust Version",
};

TEST(ListText, EveryLabelHasItsText) {
    const ListLabels labels;
    for (int i = 0; i < 28; ++i) {
        std::array<char, 40> buffer{};
        GetLocalizedString(static_cast<HeaderType>(i), buffer.data(), 40);
        EXPECT_STREQ(buffer.data(), everyLabel[i]);
        EXPECT_EQ(labels[static_cast<HeaderType>(i)], everyLabel[i]);
    }
}

TEST(ListText, AnyOtherLabelLeavesTheBufferUntouched) {
    for (const int i : {28, 1000, -1}) {
        std::array<char, 8> buffer{"before"};
        GetLocalizedString(static_cast<HeaderType>(i), buffer.data(), 8);
        EXPECT_STREQ(buffer.data(), "before");
    }
}

TEST(ListText, ALabelIsCutToItsBuffer) {
    std::array<char, 40> buffer{};
    GetLocalizedString(HeaderType::autoReissueValidity, buffer.data(), 10);
    EXPECT_STREQ(buffer.data(), "Allow Aut");
}

TEST(ListText, OnlyExactlyYesIsYes) {
    for (const auto& [text, expected] : {
             std::pair{"Yes", "Yes"},
             std::pair{"No", "No"},
             std::pair{"", "No"},
             std::pair{"yes", "No"},
             std::pair{"Yes ", "No"},
         }) {
        std::array<char, 40> buffer{};
        GetLocalizedBoolString(text, buffer.data(), 40);
        EXPECT_STREQ(buffer.data(), expected) << text;
        EXPECT_STREQ(ListLabels().boolean(text), expected) << text;
    }
}

std::string trimmed(const std::string& name, std::string* kept = nullptr) {
    const JsonRef object(json_pack("{s:s}", "name", name.c_str()));
    const std::string text = getTrimmedString("name", object.get());
    if (kept != nullptr) {
        *kept = stringMember(object.get(), "name");
    }
    return text;
}

TEST(ListText, NamesOf15BytesStayWholeAndOf16AreCut) {
    EXPECT_EQ(trimmed("123456789012345"), "123456789012345");
    EXPECT_EQ(trimmed("1234567890123456"), "123456789012345~");
    EXPECT_EQ(trimmed(std::string(1024, 'x')), std::string(15, 'x') + "~");
    EXPECT_EQ(trimmed(""), "");
}

TEST(ListText, TheCutIsKeptInTheObject) {
    std::string kept;
    trimmed("1234567890123456", &kept);
    EXPECT_EQ(kept, "123456789012345~");
}

TEST(ListText, TheCutSplitsNoLetter) {
    EXPECT_EQ(trimmed("1234567890123é67"), "1234567890123é~");
    EXPECT_EQ(trimmed("12345678901234é7"), "12345678901234~");
    EXPECT_EQ(trimmed("123456789012😀5"), "123456789012~");
}

TEST(ListText, ANameThatIsNoTextStaysNull) {
    const JsonRef object(json_pack("{s:i, s:n}", "number", 5, "null"));
    EXPECT_EQ(getTrimmedString("number", object.get()), nullptr);
    EXPECT_EQ(getTrimmedString("absent", object.get()), nullptr);
    EXPECT_STREQ(getTrimmedString("null", object.get()), "");
}

TEST(ListText, MembersOfAnObject) {
    const JsonRef object(json_pack(
        "{s:n, s:b, s:b, s:I, s:f, s:s}", "null", "true", 1, "false", 0, "int",
        static_cast<json_int_t>(1) << 40, "real", 2.5, "text", "t"));
    EXPECT_STREQ(stringMember(object.get(), "null"), "");
    EXPECT_STREQ(stringMember(object.get(), "text"), "t");
    EXPECT_EQ(stringMember(object.get(), "int"), nullptr);
    EXPECT_EQ(stringMember(object.get(), "absent"), nullptr);
    EXPECT_TRUE(isTrue(object.get(), "true"));
    for (const char* key : {"false", "null", "int", "text", "absent"}) {
        EXPECT_FALSE(isTrue(object.get(), key)) << key;
    }
    EXPECT_EQ(integerMember(object.get(), "int"), static_cast<json_int_t>(1) << 40);
    for (const char* key : {"real", "text", "true", "null", "absent"}) {
        EXPECT_EQ(integerMember(object.get(), key), 0) << key;
    }
}

TEST(ListText, TheEndOfTheReissuePermission) {
    const support::ScopedVariable zone("TZ", "UTC0");
    EXPECT_EQ(
        printedBy([] { printAllowAutoReissueDetails(0); }).out,
        "\nAllow Auto Reissue Certificate Validity  : ");
    EXPECT_EQ(
        printedBy([] { printAllowAutoReissueDetails(1); }).out,
        "\nAllow Auto Reissue Certificate Validity  : Jan 01, 1970 12:00:00 AM");
}

TEST(ListText, ASecondRunInOneProcessHasItsOwnLanguage) {
    const support::TempDir root;
    const support::ScopedVariable rootVariable("ARKEON_ROOT", root.path());
    const std::string messages = root.write(
        "xx.po", "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
                 "msgctxt \"SmeHmm0056N\"\nmsgid \"Allow Auto Reissue Certificate Validity\"\n"
                 "msgstr \"Gültig bis\"\n");
    const std::string catalogue = root.write("locale/xx/LC_MESSAGES/akhostmgmt.mo", "");
    const std::string compile = std::string(MSGFMT) + " -o '" + catalogue + "' '" + messages + "'";
    ASSERT_EQ(std::system(compile.c_str()), 0);
    const auto firstLine = [](const char* language) {
        const support::ScopedVariable variable("LANGUAGE", language);
        return printedBy([] { printAllowAutoReissueDetails(0); }).out;
    };
    EXPECT_TRUE(firstLine("").starts_with("\nAllow Auto Reissue Certificate Validity "));
    EXPECT_TRUE(firstLine("xx").starts_with("\nGültig bis "));
}

TEST(ListText, FieldsArePaddedByBytes) {
    const auto padded = [](const char* text, std::size_t width) {
        return printedBy([&] { printPadded(text, width); }).out;
    };
    EXPECT_EQ(padded("ab", 4), "ab  ");
    EXPECT_EQ(padded("é", 4), "é  ");
    EXPECT_EQ(padded("abcde", 4), "abcde");
    EXPECT_EQ(padded(nullptr, 8), "(null)  ");
    EXPECT_EQ(padded("", 0), "");
    EXPECT_EQ(padded("a", 40), "a" + std::string(39, ' '));
}

TEST(ListText, ALineOfTheLongListing) {
    const auto line = [](const char* label, const char* value) {
        return printedBy([&] { printLongLine(label, value); }).out;
    };
    EXPECT_EQ(line("Host", "h"), "\nHost                                     : h");
    EXPECT_EQ(line("Host", nullptr), "\nHost                                     : (null)");
}

}  // namespace
