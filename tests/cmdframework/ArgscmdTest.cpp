#include "cmdframework/Argscmd.h"

#include "support/CommandLine.h"
#include "support/Environment.h"
#include "support/TempDir.h"
#include "support/Throws.h"

#include <gtest/gtest.h>

namespace {

std::string numberFailure(const std::string& value) {
    const CArgscmd args = parsed({"-ar", value});
    return usageFailureOf([&args] { args.numericValue("ar"); });
}

constexpr const char* notUnsigned =
    "The following option requires an unsigned integer value or the number entered was too "
    "large:\nar";

TEST(Argscmd, EmptyByDefault) {
    const CArgscmd args;
    EXPECT_TRUE(args.options().empty());
    EXPECT_EQ(args.getProgramName(), "");
    EXPECT_EQ(args.argValue("list"), "");
}

TEST(Argscmd, ANullVectorGivesNoOptions) {
    const CArgscmd args(3, nullptr);
    EXPECT_TRUE(args.options().empty());
    EXPECT_EQ(args.getProgramName(), "");
}

TEST(Argscmd, AVectorWithoutEvenAProgramNameGivesNoOptions) {
    char* none[] = {nullptr};
    EXPECT_TRUE(CArgscmd(0, none).options().empty());
}

TEST(Argscmd, ProgramNameIsTheLastPathComponent) {
    for (const auto& [path, name] : {
             std::pair{"/usr/bin/tool", "tool"},
             std::pair{"tool", "tool"},
             std::pair{"./a/b", "b"},
         }) {
        CommandLine line({path});
        EXPECT_EQ(CArgscmd(line.argc(), line.argv()).getProgramName(), name);
    }
}

TEST(Argscmd, OptionsWithoutValuesAreEmpty) {
    const CArgscmd args = parsed({"-list", "-server"});
    EXPECT_TRUE(args.exists("list"));
    EXPECT_TRUE(args.isCommand("server"));
    EXPECT_FALSE(args.hasAValue("list"));
    EXPECT_FALSE(args.hasAValue("server"));
    EXPECT_EQ(args.options().size(), 2U);
}

TEST(Argscmd, AnOptionTakesTheNextArgumentThatIsNoOption) {
    const CArgscmd args = parsed({"-list", "-server", "m1", "-short"});
    EXPECT_EQ(args.argValue("server"), "m1");
    EXPECT_TRUE(args.hasAValue("server"));
    EXPECT_TRUE(args.exists("short"));
    EXPECT_FALSE(args.hasAValue("short"));
}

TEST(Argscmd, AnEmptyArgumentIsAnEmptyValue) {
    const CArgscmd args = parsed({"-server", "", "-list"});
    EXPECT_TRUE(args.exists("server"));
    EXPECT_FALSE(args.hasAValue("server"));
    EXPECT_TRUE(args.exists("list"));
}

TEST(Argscmd, AnEmptyArgumentInPlaceOfAnOptionIsRefused) {
    EXPECT_EQ(usageFailureOf([] { parsed({""}); }), "Missing option character on parameter.\n");
}

TEST(Argscmd, ParsingAdvancesTheVectorInPlace) {
    CommandLine line({"prog", "-list", "-server", "m1"});
    const CArgscmd args(line.argc(), line.argv());
    EXPECT_STREQ(line.argv()[1], "list");
    EXPECT_STREQ(line.argv()[2], "server");
    EXPECT_STREQ(line.argv()[3], "m1");
}

TEST(Argscmd, NamesAreFoundInAnyLetterCaseAndKeptAsTypedFirst) {
    const CArgscmd args = parsed({"-SerVer", "m1"});
    EXPECT_TRUE(args.exists("server"));
    EXPECT_TRUE(args.exists("SERVER"));
    EXPECT_EQ(args.argValue("sERVER"), "m1");
    EXPECT_EQ(args.options().begin()->first, "SerVer");
}

TEST(Argscmd, NamesAreComparedInOneWayWhateverTheLanguage) {
    const support::ScopedVariable language("LC_ALL", "no_SUCH");
    EXPECT_TRUE(parsed({"-LIST"}).exists("list"));
}

TEST(Argscmd, ALoneDashIsAnOptionWithAnEmptyName) {
    EXPECT_TRUE(CArgscmd().isOptionArgument("-"));
    EXPECT_TRUE(parsed({"-"}).exists(""));
}

TEST(Argscmd, TwoDashesMakeANameThatBeginsWithOne) {
    EXPECT_TRUE(parsed({"--list"}).exists("-list"));
    EXPECT_FALSE(parsed({"--list"}).exists("list"));
}

TEST(Argscmd, IsOptionArgument) {
    EXPECT_TRUE(CArgscmd().isOptionArgument("-a"));
    EXPECT_FALSE(CArgscmd().isOptionArgument("a-"));
    EXPECT_FALSE(CArgscmd().isOptionArgument(""));
    EXPECT_FALSE(CArgscmd().isOptionArgument(nullptr));
}

TEST(Argscmd, AnArgumentWithoutDashIsRefused) {
    EXPECT_EQ(
        usageFailureOf([] { parsed({"list"}); }), "Missing option character on parameter.\nlist");
}

TEST(Argscmd, ASecondValueIsRefused) {
    EXPECT_EQ(
        usageFailureOf([] {
            parsed({"-hostid", "abc", "def"});
        }),
        "Missing option character on parameter.\ndef");
}

TEST(Argscmd, AnOptionGivenTwiceIsRefusedAsTypedTheSecondTime) {
    EXPECT_EQ(
        usageFailureOf([] {
            parsed({"-s", "x", "-S", "y"});
        }),
        "The following option was entered more than once:\nS");
}

TEST(Argscmd, AValueNeverBeginsWithADash) {
    const CArgscmd args = parsed({"-ar", "-1"});
    EXPECT_FALSE(args.hasAValue("ar"));
    EXPECT_TRUE(args.exists("1"));
}

TEST(Argscmd, NumericValues) {
    for (const auto& [text, number] : {
             std::pair{"0", 0U},
             std::pair{"7", 7U},
             std::pair{" 7", 7U},
             std::pair{"7 ", 7U},
             std::pair{"007", 7U},
             std::pair{"4294967295", 4294967295U},
         }) {
        EXPECT_EQ(parsed({"-ar", text}).numericValue("AR"), number) << text;
    }
}

TEST(Argscmd, NumericFailures) {
    for (const char* text :
         {"4294967296", "99999999999999999999", "0x10", "12abc", "abc", " ", "1 2", "1.5", "é",
          " -5", " -4294967295", "5-"}) {
        EXPECT_EQ(numberFailure(text), notUnsigned) << text;
    }
}

TEST(Argscmd, ANumericOptionWithoutValue) {
    const CArgscmd args = parsed({"-ar"});
    EXPECT_EQ(
        usageFailureOf([&args] { args.numericValue("ar"); }),
        "The value for this option was missing:\nar");
    EXPECT_EQ(
        usageFailureOf([&args] { args.numericValue("absent"); }),
        "The value for this option was missing:\nabsent");
}

TEST(Argscmd, PathExists) {
    const CArgscmd args;
    EXPECT_NO_THROW(args.pathExists(nullptr));
    EXPECT_NO_THROW(args.pathExists("/"));
    const support::TempDir folder;
    EXPECT_NO_THROW(args.pathExists(folder.write("plain", "", 0600).c_str()));
    EXPECT_EQ(
        runTimeFailureOf([&args] { args.pathExists("/no/such/file"); }).substr(0, 30),
        "The file could not be opened.\n");
    try {
        args.pathExists("/no/such/file");
        FAIL();
    } catch (const CRuntimecmd& failure) {
        EXPECT_EQ(failure.errcode(), 104);
        EXPECT_NE(
            std::string(failure.what()).find(" (104) \"/no/such/file\"\n"), std::string::npos);
    }
}

TEST(Argscmd, ValidateChecksByType) {
    const CArgscmd args = parsed({"-p", "/no/such/file", "-n", "x"});
    EXPECT_NO_THROW(args.validate(noValue, "p"));
    EXPECT_NO_THROW(args.validate(stringValue, "p"));
    EXPECT_THROW(args.validate(pathValue, "p"), CRuntimecmd);
    EXPECT_THROW(args.validate(unsignedValue, "n"), CUsagecmd);
    EXPECT_NO_THROW(parsed({"-n", "5"}).validate(unsignedValue, "n"));
}

TEST(Argscmd, CommandLineIsInTheOrderOfNamesAndEndsWithATerminator) {
    EXPECT_EQ(
        parsed({"-server", "m1", "-list"}).commandLine(), std::string(" -list -server m1\0", 18));
    EXPECT_EQ(parsed({}).commandLine(), std::string(1, '\0'));
    EXPECT_STREQ(parsed({"-b", "-A", "-c", "x y"}).commandLine().c_str(), " -A -b -c x y");
}

TEST(Argscmd, CopiesAreIndependent) {
    const CArgscmd original = parsed({"-list"});
    CArgscmd copy = original;
    copy.remove("LIST");
    EXPECT_FALSE(copy.exists("list"));
    EXPECT_TRUE(original.exists("list"));
}

}  // namespace
