#include "support/Environment.h"
#include "support/TempDir.h"
#include "support/TestListing.h"

#include <gtest/gtest.h>

namespace {

/// A listing with dates in UTC.
std::string listed(const std::vector<std::string>& options, const std::string& body) {
    const support::ScopedVariable zone("TZ", "UTC0");
    return listWith(options, {0, 200, body}).out;
}

constexpr const char* tableHeader =
    "\n\nMapped Host Name    Approved      Conflict    Auto-discovered      Shared     "
    "Created On                    Last Updated On       ";

constexpr const char* epoch = "Jan 01, 1970 12:00:00 AM";

/// A row of the mapping table with the epoch as its dates.
std::string
row(const std::string& name, const std::string& approved, const std::string& conflict = "No",
    const std::string& discovered = "Yes", const std::string& shared = "No") {
    const auto column = [](std::string text, std::size_t width) {
        text.resize(std::max(width, text.size()), ' ');
        return text;
    };
    return "\n" + column(name, 20) + column(approved, 14) + column(conflict, 12) +
           column(discovered, 21) + column(shared, 11) + column(epoch, 30) + epoch;
}

std::string hostWith(const std::string& mappings, const std::string& name = "\"P\"") {
    return R"({"uuid":"U","hostName":)" + name + R"(,"hostMappings":[)" + mappings + "]}";
}

std::string mapping(const std::string& name, const std::string& members = "") {
    return R"({"mappedHostName":)" + name + (members.empty() ? "" : "," + members) + "}";
}

/// The mapping table of one host in the listing of approved mappings.
std::string table(const std::string& mappings) {
    const std::string out = listed({"-ap"}, R"({"hosts":[)" + hostWith(mappings) + "]}");
    const std::size_t start = out.find(tableHeader);
    EXPECT_NE(start, std::string::npos) << out;
    return out.substr(start + std::string(tableHeader).size());
}

/// The names of one host in the short format.
std::string names(const std::string& mappings, const std::string& primary = "\"P\"") {
    const std::string out =
        listed({"-short"}, R"({"hosts":[)" + hostWith(mappings, primary) + "]}");
    const std::string start =
        "\nHost ID                                 Mapped Names\nU" + std::string(39, ' ');
    EXPECT_EQ(out.substr(0, start.size()), start);
    return out.substr(start.size());
}

TEST(LongFormat, EveryLineOfAHost) {
    const std::string body = R"({
        "uuid": "0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0", "hostName": "host.example",
        "masterServer": "primary", "osType": "Linux", "osVersion": "Debian 12",
        "installedEEBs": "EEB 1", "installedPackages": "pkg", "qxUpdatePlatform": "qx 3",
        "hwDescription": "rack", "cpuArchitecture": "x86_64", "akuVersion": "10.1",
        "isSecureEnabled": true, "comment": "näher", "autoReissue": true, "trustVersion": "7",
        "autoReissueDuration": 1795248930999, "externalCertificateSubject": "CN=x",
        "hasArkeonCaHostCertificate": true, "unknown": "ignored", "hostMappings": []})";
    EXPECT_EQ(
        listed({"-i", "x"}, body),
        "\nHost ID                                  : 0a0aa0a0-0000-0aa0-aa00-000a0a00a0a0"
        "\nHost                                     : host.example"
        "\nMaster Server                            : primary"
        "\nOS Type                                  : Linux"
        "\nOperating System                         : Debian 12"
        "\nArkeon EEBs                              : EEB 1"
        "\nArkeon Packages                          : pkg"
        "\nQxUpdate Platform                        : qx 3"
        "\nHardware Description                     : rack"
        "\nCPU Architecture                         : x86_64"
        "\nVersion                                  : 10.1"
        "\nSecure                                   : Yes"
        "\nComment                                  : näher"
        "\nAllow Auto Reissue Certificate           : Yes"
        "\nTrust Version                            : 7"
        "\nAllow Auto Reissue Certificate Validity  : Nov 21, 2026 08:15:30 AM"
        "\nSubject Name of External Certificate     : CN=x"
        "\nArkeon CA Issued Certificate             : Yes" +
            std::string(tableHeader) + "\n");
}

TEST(LongFormat, NullIsEmptyAndAbsentOrNoTextIsTheWordNull) {
    const std::string out =
        listed({"-i", "x"}, R"({"uuid":null,"hostName":5,"comment":null,"isSecureEnabled":"true",
                        "autoReissue":1,"autoReissueDuration":0})");
    EXPECT_EQ(
        out.substr(0, out.find("\nMaster")), "\nHost ID                                  : "
                                             "\nHost                                     : (null)");
    EXPECT_NE(out.find("\nOS Type                                  : (null)\n"), out.npos);
    EXPECT_NE(out.find("\nComment                                  : \n"), out.npos);
    EXPECT_NE(out.find("\nSecure                                   : No\n"), out.npos);
    EXPECT_NE(out.find("\nAllow Auto Reissue Certificate           : No\n"), out.npos);
    EXPECT_NE(out.find("\nAllow Auto Reissue Certificate Validity  : \n"), out.npos);
}

TEST(LongFormat, HostsKeepTheServersOrderAndEachBeginsOnANewLine) {
    const std::string out = listed(
        {"-ap"}, R"({"hosts":[{"uuid":"B","hostMappings":[]},{"uuid":"A","hostMappings":[]}]})");
    const std::size_t second = out.find("\n\nHost ID                                  : A");
    EXPECT_EQ(out.find("\nHost ID                                  : B"), 0U);
    EXPECT_NE(second, std::string::npos);
    EXPECT_EQ(out.find(tableHeader + std::string("\n")), second - std::string(tableHeader).size());
}

TEST(MappingTable, Rows) {
    EXPECT_EQ(
        table(mapping(
            "\"a\"", R"("isApproved":true,"isConflicting":true,"isAddedManually":true,)"
                     R"("isShared":true,"createdOn":0,"updatedOn":0)")),
        row("a", "Yes", "Yes", "No", "Yes") + "\n");
    EXPECT_EQ(
        table(mapping(
            "\"a\"", R"("isApproved":false,"isConflicting":false,"isAddedManually":false,)"
                     R"("isShared":false)")),
        row("a", "No", "No", "Yes", "No") + "\n");
}

TEST(MappingTable, NullAndAbsentFlags) {
    EXPECT_EQ(table(mapping("\"absent\"")), row("absent", "No", "No", "Yes", "No") + "\n");
    EXPECT_EQ(
        table(mapping(
            "\"null\"", R"("isApproved":null,"isConflicting":null,"isAddedManually":null,)"
                        R"("isShared":null,"createdOn":null)")),
        row("null", "No", "No", "No", "No") + "\n");
}

TEST(MappingTable, DatesAreLocal) {
    const std::string out =
        table(mapping("\"a\"", R"("createdOn":1795248930999,"updatedOn":1795292130000)"));
    EXPECT_NE(
        out.find("Nov 21, 2026 08:15:30 AM      Nov 21, 2026 08:15:30 PM\n"), std::string::npos)
        << out;
}

TEST(MappingTable, DatesFarOutOfRangeAreHarmless) {
    const std::pair<const char*, const char*> rows[] = {
        {"9223372036854775807", "Aug 17, 292278994 07:12:55 AM"},
        {"-9223372036854775808", "May 16, -292275055 04:47:05 PM"},
        {"1e300", epoch},
        {"\"x\"", epoch},
        {"true", epoch},
    };
    for (const auto& [number, date] : rows) {
        const std::string out = table(mapping("\"a\"", std::string(R"("createdOn":)") + number));
        EXPECT_NE(out.find(" " + std::string(date)), std::string::npos) << out;
    }
}

TEST(MappingTable, NamesOf16BytesAreCutNullIsEmptyAndNoTextIsTheWordNull) {
    EXPECT_EQ(table(mapping("\"123456789012345\"")), row("123456789012345", "No") + "\n");
    EXPECT_EQ(table(mapping("\"1234567890123456\"")), row("123456789012345~", "No") + "\n");
    EXPECT_EQ(table(mapping("null")), row("", "No") + "\n");
    EXPECT_EQ(table(R"({})"), row("(null)", "No") + "\n");
    EXPECT_EQ(table(mapping("7")), row("(null)", "No") + "\n");
}

TEST(MappingTable, AFilteredListingKeepsTheServersOrder) {
    EXPECT_EQ(
        table(
            mapping("\"a\"", R"("isApproved":false)") + "," +
            mapping("\"b\"", R"("isApproved":true)") + "," +
            mapping("\"c\"", R"("isApproved":null)")),
        row("a", "No") + row("b", "Yes") + row("c", "No") + "\n");
}

TEST(MappingTable, TheUnfilteredListingShowsApprovedFirstAndNullInNeitherPass) {
    const std::string mappings =
        mapping("\"p1\"", R"("isApproved":false)") + "," +
        mapping("\"a1\"", R"("isApproved":true)") + "," + mapping("\"n\"", R"("isApproved":null)") +
        "," + mapping("\"p2\"") + "," + mapping("\"a2\"", R"("isApproved":true)");
    const std::string out = listed({}, R"({"hosts":[)" + hostWith(mappings) + "]}");
    EXPECT_EQ(
        out.substr(out.find(tableHeader) + std::string(tableHeader).size()),
        row("a1", "Yes") + row("a2", "Yes") + row("p1", "No") + row("p2", "No") + "\n");
}

TEST(OwnMappings, StandAloneWithoutHeaderOrHost) {
    const support::TempDir root;
    root.write(
        "etc/certificates.toml",
        "[[certificate]]\ntype = \"host\"\nserver = \"p\"\nhost_id = \"OWN\"\n"
        "certificate = \"c\"\nprivate_key = \"k\"\nca = \"a\"\n");
    const support::ScopedVariable variable("ARKEON_ROOT", root.path().string());
    const std::string host = hostWith(
        mapping("\"P\"", R"("isApproved":true)") + "," + mapping("\"b\"", R"("isApproved":true)"));
    EXPECT_EQ(
        listed({"-apvmappings"}, host), tableHeader + row("P", "Yes") + row("b", "Yes") + "\n");
    EXPECT_EQ(listed({"-apvmappings", "-short"}, host), "P, b\n");
    const std::string unnamed = hostWith(mapping("\"a\"") + "," + mapping("\"\""));
    EXPECT_EQ(listed({"-apvmappings", "-short"}, unnamed), ", a\n") << "no name comes first";
}

TEST(ShortFormat, ThePrimaryNameComesFirstWhereItIsMapped) {
    EXPECT_EQ(
        names(mapping("\"a\"") + "," + mapping("\"P\"") + "," + mapping("\"b\"")), "P, a, b\n");
    EXPECT_EQ(names(mapping("\"P\"")), "P\n");
    EXPECT_EQ(names(mapping("\"P\"") + "," + mapping("\"P\"")), "P\n");
}

TEST(ShortFormat, WithoutThePrimaryNameTheListBeginsWithTheFirstMapping) {
    EXPECT_EQ(names(mapping("\"a\"") + "," + mapping("\"b\"")), "a, b\n");
    EXPECT_EQ(names(mapping("\"a\"")), "a\n");
    EXPECT_EQ(names(""), "\n");
}

TEST(ShortFormat, NamesAreNotCutAndComparedByteForByte) {
    EXPECT_EQ(
        names(mapping("\"p\"") + "," + mapping("\"12345678901234567\"")), "p, 12345678901234567\n");
}

TEST(ShortFormat, ANullPrimaryNameIsTheEmptyOne) {
    EXPECT_EQ(names(mapping("\"a\"") + "," + mapping("null"), "null"), ", a\n");
    EXPECT_EQ(names(mapping("\"a\"") + "," + mapping("null")), "a, \n");
}

TEST(ShortFormat, NamesThatAreNoTextAreEmpty) {
    EXPECT_EQ(names(mapping("\"a\"") + "," + mapping("\"\""), "5"), ", a\n");
    EXPECT_EQ(names("{}," + mapping("\"a\"") + "," + mapping("5")), ", a, \n");
}

TEST(ShortFormat, OneHeaderForAllHosts) {
    EXPECT_EQ(
        listed({"-short"}, R"({"hosts":[{"uuid":"A"},{"uuid":null},{}]})"),
        "\nHost ID                                 Mapped Names"
        "\nA" +
            std::string(39, ' ') + "\n" + "\n" + std::string(40, ' ') + "\n" + "\n(null)" +
            std::string(34, ' ') + "\n");
}

TEST(ShortFormat, AnEmptyListHasNoHeader) {
    LogLines lines;
    AkHostMgmtList operation(parsed({"-list", "-short"}), lines.log);
    EXPECT_EQ(printedBy([&] { operation.printOutput(R"({"hosts":[]})"); }).out, "");
}

TEST(ShortFormat, AQueryByHostIdHasTheHeaderToo) {
    EXPECT_EQ(
        listed({"-i", "x", "-l"}, hostWith(mapping("\"a\""))),
        "\nHost ID                                 Mapped Names\nU" + std::string(39, ' ') + "a\n");
}

TEST(PrimaryHostExist, ComparesByteForByteAndCountsNullAsEmpty) {
    LogLines lines;
    const AkHostMgmtList operation(parsed({"-list"}), lines.log);
    const auto exists = [&operation](const std::string& host, const char* name) {
        const JsonRef record(json_loads(host.c_str(), 0, nullptr));
        return operation.primaryHostExist(record.get(), name);
    };
    const std::string host = hostWith(mapping("\"a\"") + "," + mapping("null"));
    EXPECT_EQ(exists(host, "a"), 1);
    EXPECT_EQ(exists(host, "A"), 0);
    EXPECT_EQ(exists(host, ""), 1);
    EXPECT_EQ(exists(hostWith(""), ""), 0);
    EXPECT_EQ(exists("{}", "a"), 0);
}

TEST(PrintOutput, EachReplyIsParsedForItself) {
    support::FakeClient client({{0, 200, R"({"hosts":[{}]})"}});
    LogLines lines;
    AkHostMgmtList operation(parsed({"-list", "-json", "-server", "p"}), lines.log);
    printedBy([&] { EXPECT_EQ(operation.execute(), 0); });
    EXPECT_EQ(printedBy([&] { operation.printOutput("{}"); }).out, "{}");
    EXPECT_EQ(printedBy([&] { operation.printOutput("[]"); }).out, "[]");
}

TEST(MappingRows, ArePrintedForOneHostOrOneFilter) {
    const support::ScopedVariable zone("TZ", "UTC0");
    LogLines lines;
    AkHostMgmtList operation(parsed({"-list"}), lines.log);
    const JsonRef host(json_loads(hostWith(mapping("\"a\"")).c_str(), 0, nullptr));
    json_t* mappings = json_object_get(host.get(), "hostMappings");
    EXPECT_EQ(
        printedBy([&] { operation.printSortedHostNames(host.get(), ""); }).out, row("a", "No"));
    EXPECT_EQ(
        printedBy([&] { operation.printFilteredHostName(mappings, 1, ""); }).out, row("a", "No"));
}

TEST(JsonFormat, IsIndentedBy3InTheServersOrderWithoutAFinalNewline) {
    EXPECT_EQ(
        listed({"-json"}, R"({"z":1,"hosts":[{"uuid":"é","n":null}]})"),
        "{\n   \"z\": 1,\n   \"hosts\": [\n      {\n         \"uuid\": \"é\",\n"
        "         \"n\": null\n      }\n   ]\n}");
    EXPECT_EQ(listed({"-j", "-i", "x"}, "{}"), "{}");
}

TEST(JsonFormat, CompactIsTheReplyAsItCameAndANewline) {
    const std::string body = " {\"hosts\" :\t[ {} ] }\r\n";
    EXPECT_EQ(listed({"-json_compact"}, body), body + "\n");
    EXPECT_EQ(listed({"-jc", "-i", "x"}, std::string("a\0b", 3)), std::string("a\0b\n", 4));
}

}  // namespace
