#include "cmdframework/Basecmd.h"

#include "support/CommandLine.h"
#include "support/Throws.h"

#include <gtest/gtest.h>
#include <iterator>

namespace {

constexpr AllowedValue colours[] = {{"TestBas0001N", "red"}, {"TestBas0002N", "green"}};

const PARAMETERS table[] = {
    {1, "server", "s", 0, stringValue},
    {2, "hostid", "i", 1, stringValue},
    {7, "optional", "o", 2, stringValue},
    {3, "isshared", "is", 0, noValue},
    {4, "colour", "c", 0, stringValue, colours, 2},
    {5, "count", "n", 0, unsignedValue},
    {6, "file", "f", 0, pathValue},
};

class Command : public CBasecmd {
public:
    explicit Command(const std::vector<std::string>& options, const char* option = "list")
        : CBasecmd(option, parsed(options), table, std::size(table)) {}
    explicit Command(CArgscmd line) : CBasecmd("list", std::move(line)) {}

    int execute() override { return 0; }
    void printUsage() override {}
    void finish(int status) { returnStatus = status; }
    const CArgscmd& arguments() const { return args; }
    void checkArguments() override { CBasecmd::checkArguments(); }
};

std::string refusal(const std::vector<std::string>& options) {
    Command command(options);
    return usageFailureOf([&command] { command.checkArguments(); });
}

TEST(Basecmd, AcceptsWhatTheTableAccepts) {
    for (const std::vector<std::string>& options : {
             std::vector<std::string>{"-list", "-hostid", "x"},
             {"-list", "-i", "x", "-S", "m1", "-IS"},
             {"-i", "x", "-list", "-colour", "GREEN"},
             {"-list", "-i", "x", "-n", "4294967295", "-f", "/"},
         }) {
        Command command(options);
        EXPECT_NO_THROW(command.checkArguments());
        EXPECT_FALSE(command.arguments().exists("list")) << "the command's own option is taken out";
    }
}

TEST(Basecmd, HelpWinsOverEveryOtherCheck) {
    EXPECT_EQ(refusal({"-list", "-HELP", "-unknown", "-server"}), "Help requested.");
    EXPECT_EQ(refusal({"-help", "value"}), "Help requested.");
}

TEST(Basecmd, TheAliasOfHelpIsNoRequestHere) {
    EXPECT_EQ(refusal({"-list", "-i", "x", "-h"}), "An invalid option was used.\nh");
}

TEST(Basecmd, TheCommandOptionMustBeThereWithoutAValue) {
    EXPECT_EQ(refusal({"-hostid", "x"}), "Missing the command option from the arguments list.");
    EXPECT_EQ(refusal({"-list", "x"}), "There is no value associated with the command option");
}

TEST(Basecmd, AnEmptyNameNeedsNoCommandOption) {
    Command command({"-hostid", "x"}, "");
    EXPECT_NO_THROW(command.checkArguments());
}

TEST(Basecmd, ARequiredOptionIsNamedWithItsAlias) {
    EXPECT_EQ(
        refusal({"-list"}), "The following option is required and was not specified:\nhostid|i");
}

TEST(Basecmd, ARequiredOptionWithoutAliasIsNamedAlone) {
    const PARAMETERS only[] = {{1, "needed", "", 1, stringValue}};
    class OneOption : public Command {
    public:
        explicit OneOption(const PARAMETERS* row) : Command(parsed({"-list"})) {
            params.addParameters(row, 1);
        }
    } command(only);
    EXPECT_EQ(
        usageFailureOf([&command] { command.checkArguments(); }),
        "The following option is required and was not specified:\nneeded");
}

TEST(Basecmd, AMissingRequiredOptionIsReportedBeforeAnUnknownOne) {
    EXPECT_EQ(
        refusal({"-list", "-abc"}),
        "The following option is required and was not specified:\nhostid|i");
    EXPECT_EQ(refusal({"-list", "-i", "x", "-abc"}), "An invalid option was used.\nabc");
}

TEST(Basecmd, AMissingValueIsNamedAsGiven) {
    EXPECT_EQ(refusal({"-list", "-server"}), "The value for this option was missing:\nserver");
    EXPECT_EQ(refusal({"-list", "-S"}), "The value for this option was missing:\ns");
}

TEST(Basecmd, AnUnwantedValueIsNamedAsGiven) {
    EXPECT_EQ(
        refusal({"-list", "-i", "x", "-is", "yes"}),
        "This option was given a value but does not use one.\nis");
    EXPECT_EQ(
        refusal({"-list", "-i", "x", "-isshared", "yes"}),
        "This option was given a value but does not use one.\nisshared");
}

TEST(Basecmd, NameAndAliasMayNotBothBeGiven) {
    EXPECT_EQ(
        refusal({"-list", "-hostid", "x", "-i", "y"}),
        "Either parameter name or alias of the following option required:\nhostid\ni");
}

TEST(Basecmd, AMissingValueIsReportedBeforeNameAndAlias) {
    EXPECT_EQ(
        refusal({"-list", "-hostid", "-i", "y"}), "The value for this option was missing:\nhostid");
}

TEST(Basecmd, ValuesAreCheckedByType) {
    EXPECT_EQ(
        refusal({"-list", "-i", "x", "-COUNT", "many"}),
        "The following option requires an unsigned integer value or the number entered was too "
        "large:\nCOUNT");
    Command command({"-list", "-i", "x", "-file", "/no/such"});
    EXPECT_THROW(command.checkArguments(), CRuntimecmd);
}

TEST(Basecmd, AllowedValuesAreChecked) {
    EXPECT_EQ(refusal({"-list", "-i", "x", "-C", "blue"}), "Invalid value supplied for option\nC");
}

TEST(Basecmd, TheFirstWrongOptionInAlphabeticalOrderIsReported) {
    EXPECT_EQ(refusal({"-list", "-i", "x", "-zzz", "-Aaa"}), "An invalid option was used.\nAaa");
}

TEST(Basecmd, ADetailIsCutAt255Bytes) {
    const PARAMETERS only[] = {{1, std::string(300, 'q'), "", 1, stringValue}};
    class OneOption : public Command {
    public:
        explicit OneOption(const PARAMETERS* row) : Command(parsed({"-list"})) {
            params.addParameters(row, 1);
        }
    } command(only);
    const std::string text = usageFailureOf([&command] { command.checkArguments(); });
    EXPECT_EQ(text.substr(text.find('\n') + 1), std::string(255, 'q'));
}

TEST(Basecmd, OnlyStringsHaveAllowedValues) {
    const Command command({"-list", "-n", "3"});
    const PARAMETERS number{5, "count", "n", 0, unsignedValue, colours, 2};
    EXPECT_NO_THROW(command.validateExpectedParamValue(number, "n"));
    EXPECT_THROW(command.valueInSet(number, "n"), CUsagecmd);
    const PARAMETERS none{5, "count", "n", 0, stringValue, colours, 0};
    EXPECT_NO_THROW(command.valueInSet(none, "n")) << "a count of 0 allows everything";
}

TEST(Basecmd, WithoutAnyAllowedValueEverythingIsAllowed) {
    const Command command({"-list", "-n", "3"});
    const PARAMETERS noTable{5, "count", "n", 0, stringValue, nullptr, 2};
    EXPECT_NO_THROW(command.valueInSet(noTable, "n"));
    const PARAMETERS onlyRed{5, "count", "n", 0, stringValue, colours, 1};
    EXPECT_THROW(command.valueInSet(onlyRed, "n"), CUsagecmd);
}

TEST(Basecmd, ACommandWithoutOptionsAcceptsNotEvenALoneDash) {
    Command command(parsed({"-list", "-"}));
    EXPECT_EQ(
        usageFailureOf([&command] { command.checkArguments(); }), "An invalid option was used.\n");
}

TEST(Basecmd, AReturnStatusThatIsNotZeroIsThrown) {
    Command command({"-list"});
    EXPECT_NO_THROW(command.checkReturnStatus());
    command.finish(5);
    try {
        command.checkReturnStatus();
        FAIL();
    } catch (const CRuntimecmd& failure) {
        EXPECT_EQ(failure.errcode(), 5);
        EXPECT_EQ(std::string(failure.what()).substr(0, 24), "Unknown run time error.\n");
    }
}

TEST(Basecmd, ANullNameOrTableIsRefused) {
    EXPECT_EQ(
        runTimeFailureOf([] { const Command command({}, nullptr); }),
        "The top level command name is NULL. => 20");
    class NoTable : public CBasecmd {
    public:
        NoTable() : CBasecmd("list", parsed({}), nullptr, 1) {}
        int execute() override { return 0; }
        void printUsage() override {}
    };
    EXPECT_EQ(
        runTimeFailureOf([] { const NoTable command; }),
        "The command parameters list is NULL. => 20");
}

TEST(Basecmd, ANullNameIsRefusedWithoutATableToo) {
    class NoName : public CBasecmd {
    public:
        NoName() : CBasecmd(nullptr, parsed({})) {}
        int execute() override { return 0; }
        void printUsage() override {}
    };
    EXPECT_EQ(
        runTimeFailureOf([] { const NoName command; }),
        "The top level command name is NULL. => 20");
}

}  // namespace
