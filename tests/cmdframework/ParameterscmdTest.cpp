#include "cmdframework/Parameterscmd.h"

#include "support/Throws.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr AllowedValue yesNo[] = {{"TestPar0001N", "yes"}, {"TestPar0002N", "no"}};

const PARAMETERS table[] = {
    {3, "third", "t", 0, pathValue},
    {1, "first", "s", 1, stringValue, yesNo, 2},
    {2, "second", "first", 0, unsignedValue},
    {4, "fourth", "", 0, noValue, yesNo, 2},
};

std::vector<std::uint32_t> idsOf(const CParameterscmd& params) {
    std::vector<std::uint32_t> ids;
    for (const auto& [id, row] : params) {
        ids.push_back(id);
    }
    return ids;
}

TEST(Parameterscmd, RowsAreWalkedInTheOrderOfIds) {
    EXPECT_EQ(idsOf(CParameterscmd(table, 4)), (std::vector<std::uint32_t>{1, 2, 3, 4}));
}

TEST(Parameterscmd, TheFirstRowWithAnIdWins) {
    const PARAMETERS twice[] = {{1, "one", "o", 0, noValue}, {1, "uno", "u", 0, noValue}};
    const CParameterscmd params(twice, 2);
    EXPECT_EQ(params.size(), 1U);
    EXPECT_EQ(params.find("one")->second.alias, "o");
    EXPECT_EQ(params.find("uno"), params.end());
}

TEST(Parameterscmd, ANullListIsRefusedByTheConstructorOnly) {
    EXPECT_EQ(
        runTimeFailureOf([] { const CParameterscmd params(nullptr, 0); }),
        "The command parameters list is NULL. => 20");
    CParameterscmd params;
    params.addParameters(nullptr, 5);
    EXPECT_TRUE(params.empty());
}

TEST(Parameterscmd, ACountOfZeroGivesAnEmptyTable) {
    EXPECT_TRUE(CParameterscmd(table, 0).empty());
}

TEST(Parameterscmd, AddParametersKeepsWhatIsThere) {
    CParameterscmd params(table, 2);
    const PARAMETERS more[] = {{1, "other", "x", 0, noValue}, {9, "ninth", "n", 0, noValue}};
    params.addParameters(more, 2);
    EXPECT_EQ(idsOf(params), (std::vector<std::uint32_t>{1, 3, 9}));
    EXPECT_EQ(params.find("first")->second.id, 1U);
    params.addParameters(more, 0);
    EXPECT_EQ(params.size(), 3U);
}

TEST(Parameterscmd, FindsByNameAndAliasInAnyLetterCase) {
    CParameterscmd params(table, 4);
    const CParameterscmd& constant = params;
    EXPECT_EQ(params.find("S")->second.name, "first");
    EXPECT_EQ(constant.find("THIRD")->second.id, 3U);
    EXPECT_EQ(constant.find("unknown"), constant.end());
}

TEST(Parameterscmd, ANameThatIsAlsoAnAliasResolvesToTheLowerId) {
    EXPECT_EQ(CParameterscmd(table, 4).find("first")->second.id, 1U);
}

TEST(Parameterscmd, ParameterTypes) {
    const CParameterscmd params(table, 4);
    EXPECT_EQ(params.parameterType("T"), pathValue);
    EXPECT_EQ(params.parameterType("second"), unsignedValue);
    EXPECT_EQ(params.parameterType("unknown"), noValue) << "as a flag";
}

TEST(Parameterscmd, TypeWords) {
    const CParameterscmd params;
    EXPECT_STREQ(params.usageStringFor(noValue), "none");
    EXPECT_STREQ(params.usageStringFor(stringValue), "string");
    EXPECT_STREQ(params.usageStringFor(pathValue), "string");
    EXPECT_STREQ(params.usageStringFor(unsignedValue), "unsigned integer");
    EXPECT_STREQ(params.usageStringFor(static_cast<parameterTypes>(17)), "none");
}

TEST(Parameterscmd, AllowedValuesAreListedForOptionsThatTakeAValue) {
    const CParameterscmd params;
    EXPECT_EQ(params.usageStringFor(table[1]), " [ yes | no ]");
    EXPECT_EQ(params.usageStringFor(table[0]), "");
    EXPECT_EQ(params.usageStringFor(table[3]), "") << "a flag takes no value";
    const PARAMETERS only{5, "fifth", "", 0, stringValue, yesNo, 1};
    EXPECT_EQ(params.usageStringFor(only), " [ yes ]");
    const PARAMETERS noCount{5, "fifth", "", 0, stringValue, yesNo, 0};
    EXPECT_EQ(params.usageStringFor(noCount), "");
    const PARAMETERS noValues{5, "fifth", "", 0, stringValue, nullptr, 2};
    EXPECT_EQ(params.usageStringFor(noValues), "");
}

TEST(Parameterscmd, UsageStringBreaksBeforeColumn80) {
    EXPECT_EQ(
        CParameterscmd(table, 4).usageString(),
        "-first|-s string [ yes | no ] -second|-first unsigned integer -third|-t string\n"
        "-fourth none");
}

TEST(Parameterscmd, UsageStringFillsALineTo79Columns) {
    const PARAMETERS rows[] = {
        {1, std::string(50, 'a'), "", 0, noValue},
        {2, std::string(16, 'b'), "", 0, noValue},
        {3, "c", "", 0, noValue},
    };
    const std::string text = CParameterscmd(rows, 3).usageString();
    EXPECT_EQ(text.find('\n'), 79U);
    EXPECT_EQ(text.substr(80), "-c none");
    EXPECT_EQ(CParameterscmd().usageString(), "");
}

/// The lengths of the lines of a usage whose options have these lengths.
std::vector<std::size_t> linesOf(const std::vector<std::size_t>& lengths) {
    CParameterscmd params;
    for (const std::size_t length : lengths) {
        const std::string name(length - std::string("- none").size(), 'a');
        const PARAMETERS row{static_cast<std::uint32_t>(params.size()), name, "", 0, noValue};
        params.addParameters(&row, 1);
    }
    std::istringstream text(params.usageString());
    std::vector<std::size_t> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line.size());
    }
    return lines;
}

TEST(Parameterscmd, EveryLineOfTheUsageIsFilledAnew) {
    using Lengths = std::vector<std::size_t>;
    EXPECT_EQ(linesOf({56, 23, 55}), (Lengths{56, 79})) << "80 do not fit, 79 do";
    EXPECT_EQ(linesOf({26, 26, 25}), (Lengths{79}));
    EXPECT_EQ(linesOf({26, 26, 26}), (Lengths{53, 26}));
    EXPECT_EQ(linesOf({79, 79, 7, 71, 7}), (Lengths{79, 79, 79, 7}));
}

}  // namespace
