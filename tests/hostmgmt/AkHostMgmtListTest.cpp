#include "cmdframework/Messages.h"
#include "support/Environment.h"
#include "support/OptionTable.h"
#include "support/StatusLines.h"
#include "support/TempDir.h"
#include "support/TestListing.h"
#include "support/Throws.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

constexpr const char* oneHost = R"({"hosts":[{"uuid":"U"}]})";

/// The text of the usage failure of `-list` with further options.
std::string refusal(std::vector<std::string> options) {
    options.insert(options.begin(), "-list");
    LogLines lines;
    AkHostMgmtList operation(parsed(options), lines.log);
    return usageFailureOf([&operation] { operation.checkArguments(); });
}

/// The same, and that the text was logged before.
std::string loggedRefusal(const std::vector<std::string>& options) {
    const std::string text = refusal(options);
    EXPECT_EQ(LogLines::lines(), Lines{"2 " + text});
    return text;
}

const std::string exactlyOne = "Please select exactly one of these options:";
const std::string tooLong = "The value for the following parameter is too long.\nhost";
const std::string hostSlashes = "Host name must not contain slashes ('/' or '\\')";
const std::string idSlashes = "Host ID must not contain slashes ('/' or '\\')";

TEST(ListTable, HoldsTheOptionsInTheirOrder) {
    expectTable<AkHostMgmtList>(
        "-list", {{"server", "s"},
                  {"hostid", "i"},
                  {"host", "n"},
                  {"short", "l", noValue},
                  {"json", "j", noValue},
                  {"json_compact", "jc", noValue},
                  {"approved", "ap", noValue},
                  {"pending", "p", noValue},
                  {"conflict", "cf", noValue},
                  {"apvmappings", "am", noValue},
                  {"help", "h", noValue}});
}

TEST(ListArguments, TheOperationIsNamedAsItIsGiven) {
    for (const char* option : {"-list", "-li", "-LIST", "-Li"}) {
        LogLines lines;
        AkHostMgmtList operation(parsed({option}), lines.log);
        EXPECT_NO_THROW(operation.checkArguments()) << option;
    }
}

TEST(ListArguments, EveryOptionAndAliasIsKnown) {
    for (const std::vector<std::string>& options : {
             std::vector<std::string>{"-server", "m"},
             {"-s", "m"},
             {"-hostid", "x"},
             {"-i", "x"},
             {"-host", "x"},
             {"-n", "x"},
             {"-short"},
             {"-l"},
             {"-json"},
             {"-j"},
             {"-json_compact"},
             {"-jc"},
             {"-approved"},
             {"-ap"},
             {"-pending"},
             {"-p"},
             {"-conflict"},
             {"-cf"},
             {"-apvmappings"},
             {"-am"},
         }) {
        std::vector<std::string> line = options;
        line.insert(line.begin(), "-list");
        LogLines lines;
        AkHostMgmtList operation(parsed(line), lines.log);
        EXPECT_NO_THROW(operation.checkArguments()) << options[0];
    }
}

TEST(ListArguments, TheAliasOfHelpIsARequestForHelpAndNotLogged) {
    EXPECT_EQ(refusal({"-h"}), "Help requested.");
    EXPECT_TRUE(LogLines::lines().empty());
    EXPECT_EQ(refusal({"-H", "-hostid", "a/b"}), "Help requested.");
}

TEST(ListArguments, ContradictingOptionsAreJoinedWithoutABlankAfterTheColon) {
    EXPECT_EQ(loggedRefusal({"-hostid", "x", "-n", "y"}), exactlyOne + "hostid host");
    EXPECT_EQ(loggedRefusal({"-l", "-json"}), exactlyOne + "short json");
    EXPECT_EQ(loggedRefusal({"-short", "-jc"}), exactlyOne + "short json_compact");
    EXPECT_EQ(loggedRefusal({"-j", "-json_compact"}), exactlyOne + "json json_compact");
}

TEST(ListArguments, FiltersAreJoinedWithABlankAndATrailingBlank) {
    EXPECT_EQ(loggedRefusal({"-approved", "-pending"}), exactlyOne + " approved pending ");
    EXPECT_EQ(
        loggedRefusal({"-cf", "-p", "-ap", "-n", "x"}),
        exactlyOne + " host approved pending conflict ");
    EXPECT_EQ(loggedRefusal({"-i", "x", "-cf"}), exactlyOne + " hostid conflict ");
}

TEST(ListArguments, ApvmappingsCountsButIsNotNamed) {
    EXPECT_EQ(loggedRefusal({"-approved", "-apvmappings"}), exactlyOne + " approved ");
    EXPECT_EQ(loggedRefusal({"-am", "-i", "x"}), exactlyOne + " hostid ");
}

TEST(ListArguments, FormatsAreCheckedBeforeAnyValue) {
    EXPECT_EQ(refusal({"-short", "-json", "-host", "a/b"}), exactlyOne + "short json");
    EXPECT_EQ(refusal({"-hostid", "a/b", "-host", "c/d"}), exactlyOne + "hostid host");
}

TEST(ListArguments, SlashesAreRefusedBeforeTheLength) {
    EXPECT_EQ(loggedRefusal({"-host", "a/b"}), hostSlashes);
    EXPECT_EQ(loggedRefusal({"-n", "a\\b"}), hostSlashes);
    EXPECT_EQ(loggedRefusal({"-hostid", "/"}), idSlashes);
    EXPECT_EQ(loggedRefusal({"-i", "x\\"}), idSlashes);
    EXPECT_EQ(refusal({"-host", std::string(2000, 'x') + "/"}), hostSlashes);
    EXPECT_EQ(refusal({"-host", "a/b", "-approved"}), hostSlashes) << "before the filters";
}

TEST(ListArguments, HostNamesHaveAtMost1024BytesAndHostIdsAnyNumber) {
    EXPECT_EQ(loggedRefusal({"-host", std::string(1025, 'x')}), tooLong);
    EXPECT_EQ(loggedRefusal({"-n", std::string(1025, 'x')}), tooLong);
    LogLines lines;
    AkHostMgmtList longest(parsed({"-list", "-host", std::string(1024, 'x')}), lines.log);
    EXPECT_NO_THROW(longest.checkArguments());
    AkHostMgmtList longId(parsed({"-list", "-hostid", std::string(5000, 'x')}), lines.log);
    EXPECT_NO_THROW(longId.checkArguments());
}

struct QueryRow {
    std::vector<std::string> options;
    const char* resource;
    const char* logLine;
};

TEST(ListQuery, EveryFilterHasItsResource) {
    const QueryRow rows[] = {
        {{"-i", "a b"}, "a b", "2 List operation, Host Id supplied"},
        {{"-host", "a b"}, "hostmappings?mappedhostname=a%20b", nullptr},
        {{"-ap"}, "hostmappings?isapproved=true", "2 List operation, Approved supplied"},
        {{"-p"}, "hostmappings?isapproved=false", "2 List operation, Pending supplied"},
        {{"-conflict"}, "hostmappings?isconflict=true", "2 List operation, Conflict supplied"},
        {{}, "hostmappings", "2 List operation, no option supplied"},
    };
    for (const QueryRow& row : rows) {
        const Listing listing = listWith(row.options, {0, 200, oneHost});
        EXPECT_EQ(listing.result, 0);
        EXPECT_EQ(listing.request.method, "GET");
        EXPECT_EQ(listing.request.uri, std::string("arkeon/config/hosts/") + row.resource);
        EXPECT_EQ(listing.request.body, "");
        EXPECT_TRUE(listing.request.withToken);
        const auto isQueryLine = [](const std::string& line) {
            return line.starts_with("2 List operation");
        };
        const auto line = std::find_if(listing.log.begin(), listing.log.end(), isQueryLine);
        if (row.logLine == nullptr) {
            EXPECT_EQ(line, listing.log.end());
        } else {
            ASSERT_NE(line, listing.log.end());
            EXPECT_EQ(*line, row.logLine);
        }
    }
}

// The rules refuse both; a query that is made without them goes by the name.
TEST(ListQuery, ANameComesBeforeAHostId) {
    support::FakeClient client({{0, 200, R"({"hosts":[]})"}});
    LogLines lines;
    AkHostMgmtList operation(parsed({"-list", "-i", "x", "-n", "h", "-s", "p"}), lines.log);
    printedBy([&operation] { operation.execute(); });
    EXPECT_EQ(client.requests.at(0).uri, "arkeon/config/hosts/hostmappings?mappedhostname=h");
}

TEST(ListQuery, TheOwnMappingsAreAskedForWithTheHostCertificate) {
    const support::TempDir root;
    root.write(
        "etc/certificates.toml",
        "[[certificate]]\ntype = \"host\"\nserver = \"p\"\nhost_id = \"OWN\"\n"
        "certificate = \"c\"\nprivate_key = \"k\"\nca = \"a\"\n");
    const support::ScopedVariable variable("ARKEON_ROOT", root.path().string());
    const Listing listing = listWith({"-am"}, {0, 200, "{}"});
    EXPECT_EQ(listing.result, 0);
    EXPECT_EQ(listing.request.uri, "arkeon/config/hosts/OWN/hostmappings?isapproved=true");
    EXPECT_FALSE(listing.request.withToken);
    const Lines& log = listing.log;
    EXPECT_NE(
        std::find(log.begin(), log.end(), "2 \nFetched HostId : OWN, Return code : 0"), log.end());
}

TEST(ListQuery, WithoutAnOwnHostIdNothingIsSent) {
    const support::TempDir root;
    const support::ScopedVariable variable("ARKEON_ROOT", root.path().string());
    const support::FakeClient client;
    LogLines lines;
    AkHostMgmtList operation(parsed({"-list", "-am", "-s", "p"}), lines.log);
    operation.checkArguments();
    EXPECT_EQ(operation.execute(), 7640);
    EXPECT_EQ(LogLines::lines().back(), "16 \ngetHostIDfromCertmapinfo() failed, retval = 7640");
}

TEST(ListResult, AFailedRequestIsReturnedAndPrintsNothingElse) {
    const Listing listing = listWith(
        {"-json_compact", "-hostid", "x"}, {0, 404, R"({"errorCode":8701,"errorMessage":"m"})"});
    EXPECT_EQ(listing.result, 8701);
    EXPECT_EQ(listing.out, "");
    EXPECT_EQ(listing.err, lineOf(8701));
}

TEST(ListResult, WithoutAReplyTheStatusIs0) {
    const Listing listing = listWith({}, {7621, 0, ""});
    EXPECT_EQ(listing.result, 7621);
    EXPECT_EQ(listing.err, lineOf(7621));
    EXPECT_EQ(listing.log.back(), "2 Http return code : 0, Response string : ");
}

TEST(ListResult, AnyOtherSuccessThan200PrintsNothing) {
    const Listing listing = listWith({}, {0, 201, oneHost});
    EXPECT_EQ(listing.result, 0);
    EXPECT_EQ(listing.out + listing.err, "");
}

TEST(ListResult, AnUnreadableListIs7610) {
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, {"-json"}, {"-jc"}, {"-short"}, {"-host", "x"}}) {
        const Listing listing = listWith(options, {0, 200, "<html>"});
        EXPECT_EQ(listing.result, 7610);
        EXPECT_EQ(listing.out, "");
        EXPECT_EQ(listing.err, lineOf(7610));
    }
}

TEST(ListResult, AnUnreadableHostIsReportedButCountsAsDone) {
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"-i", "x"}, {"-i", "x", "-json"}, {"-i", "x", "-short"}}) {
        const Listing listing = listWith(options, {0, 200, "<html>"});
        EXPECT_EQ(listing.result, 0);
        EXPECT_EQ(listing.out, "");
        EXPECT_EQ(listing.err, lineOf(7610));
    }
}

TEST(ListResult, ACompactHostIsEchoedUnread) {
    const Listing listing = listWith({"-i", "x", "-jc"}, {0, 200, "<html>"});
    EXPECT_EQ(listing.result, 0);
    EXPECT_EQ(listing.out, "<html>\n");
    EXPECT_EQ(listing.err, "");
}

TEST(ListResult, NothingFoundComesBeforeAnyFormat) {
    for (const char* body :
         {R"({"hosts":[]})", "{}", R"({"hosts":null})", R"({"hosts":{}})", "[]"}) {
        for (const std::vector<std::string>& format :
             {std::vector<std::string>{}, {"-short"}, {"-json"}, {"-json_compact"}}) {
            std::vector<std::string> options = format;
            options.emplace_back("-approved");
            const Listing listing = listWith(options, {0, 200, body});
            EXPECT_EQ(listing.result, 0);
            EXPECT_EQ(listing.out, "Mappings for the specified option do not exist.\n");
            EXPECT_EQ(listing.err, "");
        }
    }
}

TEST(ListResult, AHostWithoutMappingsIs8902InEveryFormat) {
    for (const std::vector<std::string>& format :
         {std::vector<std::string>{}, {"-short"}, {"-json"}, {"-json_compact"}}) {
        std::vector<std::string> options = format;
        options.insert(options.end(), {"-host", "x"});
        const Listing listing = listWith(options, {0, 200, R"({"hosts":[]})"});
        EXPECT_EQ(listing.result, 8902);
        EXPECT_EQ(listing.out, "");
        EXPECT_EQ(listing.err, "Exit Status 8902: Mappings for the specified host do not exist.\n");
    }
}

TEST(ListResult, AQueryByHostIdNeverLooksForAnEmptyList) {
    const Listing listing = listWith({"-i", "x", "-short"}, {0, 200, R"({"hosts":[]})"});
    EXPECT_EQ(listing.result, 0);
    EXPECT_EQ(
        listing.out, "\nHost ID                                 Mapped Names\n(null)" +
                         std::string(34, ' ') + "\n");
}

TEST(ListUsage, HelpAndUsageAreWordedAsTheyAre) {
    LogLines lines;
    AkHostMgmtList operation(parsed({"-list"}), lines.log);
    const std::string synopsis =
        "akhostmgmt { {-li | -list} [{-l | -short} | {-j | -json} | { -jc | -json_compact}] \n"
        "\t [{-i | -hostid} <hostid> | \n"
        "\t {-n | -host} <host> | \n"
        "\t {-ap | -approved} | \n"
        "\t {-p | -pending} | \n"
        "\t {-cf | -conflict}]\n"
        "\t [{-s | -server} <master_server>] }\n";
    EXPECT_EQ(printedBy([] { AkHostMgmtList::printHelp(); }).out, synopsis);
    EXPECT_EQ(
        printedBy([&] { operation.printUsage(); }).out,
        "\nUSAGE:\n\n" + synopsis +
            "\nDescription:\n"
            "Lists host ID-to-host name(or IP address) mappings for long, short, json, and "
            "json_compact output format.\n"
            "\nExamples:\n"
            "akhostmgmt -list\n"
            "akhostmgmt -list -server testserver\n"
            "akhostmgmt -list -hostid 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0 -short\n"
            "akhostmgmt -list -host testhost -json\n"
            "akhostmgmt -list -approved -json_compact\n"
            "akhostmgmt -list -pending\n"
            "akhostmgmt -list -conflict\n");
}

}  // namespace
