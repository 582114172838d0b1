#include "arkeon/host_identity.h"
#include "arkeon/master_config.h"
#include "arkeon/status.h"
#include "support/Environment.h"
#include "support/LogReader.h"
#include "support/TempDir.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using support::LogReader;
using support::ScopedVariable;
using support::TempDir;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace status = arkeon::status;

namespace {

/// A root folder of its own.
class RootTest : public testing::Test {
protected:
    RootTest() : variable_("ARKEON_ROOT", root_.path()) {}

    void writeMaster(std::string_view text) const { root_.write("etc/master.toml", text); }
    void writeCertificates(std::string_view text) const {
        root_.write("etc/certificates.toml", text);
    }

    TempDir root_;
    LogReader log_;

private:
    ScopedVariable variable_;
};

using MasterConfigTest = RootTest;

TEST_F(MasterConfigTest, NamesThePrimaryServer) {
    writeMaster("[primary_server]\nname = \"primary.example.com\"\n");
    ASSERT_EQ(AK_read_master_config(), 0) << log_.text();
    ASSERT_NE(get_master_config_ptr(), nullptr);
    ASSERT_NE(get_master_config_ptr()->primary_server, nullptr);
    EXPECT_STREQ(get_master_config_ptr()->primary_server->name, "primary.example.com");
    EXPECT_FALSE(get_master_config_ptr()->active_node);
}

TEST_F(MasterConfigTest, TableNameAndClusterMayBeMissing) {
    writeMaster("");
    ASSERT_EQ(AK_read_master_config(), 0);
    EXPECT_EQ(get_master_config_ptr()->primary_server, nullptr);
    writeMaster("[primary_server]\n");
    ASSERT_EQ(AK_read_master_config(), 0);
    ASSERT_NE(get_master_config_ptr()->primary_server, nullptr);
    EXPECT_EQ(get_master_config_ptr()->primary_server->name, nullptr);
    writeMaster("[primary_server]\nname = \"\"\n");
    ASSERT_EQ(AK_read_master_config(), 0);
    EXPECT_STREQ(get_master_config_ptr()->primary_server->name, "");
}

TEST_F(MasterConfigTest, UnknownKeysAreIgnored) {
    writeMaster(
        "other = 1\n[primary_server]\nname = \"a\"\nport = \"x\"\n[more]\n[cluster]\nx=1\n");
    EXPECT_EQ(AK_read_master_config(), 0) << log_.text();
}

TEST_F(MasterConfigTest, ActiveNodeOnlyWhenTheClusterSaysSo) {
    for (const auto& [text, active] : std::array<std::pair<const char*, bool>, 4>{
             {{"", false},
              {"[cluster]\n", false},
              {"[cluster]\nactive_node = false\n", false},
              {"[cluster]\nactive_node = true\n", true}}}) {
        writeMaster(text);
        ASSERT_EQ(AK_read_master_config(), 0);
        EXPECT_EQ(IsActiveClusterNode(), active) << text;
    }
}

/// The steps of a process that has not read the master configuration.
bool readsWhenNobodyHas() {
    const TempDir root;
    const ScopedVariable variable("ARKEON_ROOT", root.path());
    const bool without = !IsActiveClusterNode() && get_master_config_ptr() == nullptr;
    root.write("etc/master.toml", "[cluster]\nactive_node = true\n");
    const bool read = IsActiveClusterNode() && get_master_config_ptr() != nullptr;
    root.write("etc/master.toml", "[cluster]\nactive_node = false\n");
    const bool notReadAgain = IsActiveClusterNode();
    return without && read && notReadAgain;
}

TEST(MasterConfigDeathTest, ActiveNodeReadsTheConfigurationWhenNobodyHas) {
    // This style starts the program anew.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(std::exit(readsWhenNobodyHas() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(MasterConfigTest, FailureKeepsTheConfigurationBefore) {
    writeMaster("[primary_server]\nname = \"before\"\n");
    ASSERT_EQ(AK_read_master_config(), 0);
    writeMaster("[primary_server]\nname = 1\n");
    EXPECT_EQ(AK_read_master_config(), status::unreadableMasterConfig);
    EXPECT_STREQ(get_master_config_ptr()->primary_server->name, "before");
}

TEST_F(MasterConfigTest, MissingFile) {
    EXPECT_EQ(AK_read_master_config(), status::unreadableMasterConfig);
    EXPECT_THAT(
        log_.text(), EndsWith(" 16 arkeon: " + root_.file("etc/master.toml: no such file\n")));
}

TEST_F(MasterConfigTest, UnreadableFile) {
    std::filesystem::create_directories(root_.file("etc/master.toml"));
    EXPECT_EQ(AK_read_master_config(), status::unreadableMasterConfig);
    EXPECT_THAT(log_.text(), EndsWith("etc/master.toml: not a regular file\n"));
}

/// A text and the reason that must be in the log.
struct Malformed {
    const char* text;
    const char* reason;
};

TEST_F(MasterConfigTest, ReasonsHaveLineAndColumn) {
    for (const Malformed& wrong :
         {Malformed{"[primary_server\n", "master.toml, line 1, column "},
          Malformed{"x = 1\ny = ?\n", "master.toml, line 2, column "},
          Malformed{"\xff", "invalid utf-8"},
          Malformed{"[cluster]\nx = 2.5'ä\n", "master.toml, line 2, column 8"},
          Malformed{"primary_server = 1\n", "line 1, column 18: primary_server must be a table"},
          Malformed{"x = 1\n[[primary_server]]\n", "primary_server must be a table"},
          Malformed{
              "[primary_server]\nname = 1\n",
              "master.toml, line 2, column 8: primary_server.name must be a text"},
          Malformed{"[primary_server]\nname = \"a\\u0000b\"\n", "primary_server.name must be"},
          Malformed{"cluster = true\n", "line 1, column 11: cluster must be a table"},
          Malformed{
              "[cluster]\nactive_node = \"true\"\n",
              "line 2, column 15: cluster.active_node must be true or false"}}) {
        writeMaster(wrong.text);
        EXPECT_EQ(AK_read_master_config(), status::unreadableMasterConfig) << wrong.text;
        EXPECT_THAT(log_.lines().back(), HasSubstr(wrong.reason));
    }
}

/// `getHostID` into a buffer of `size` bytes that held something else.
class HostIdTest : public RootTest {
protected:
    int read(const char* server, int type = 1, std::size_t size = 64) {
        buffer_ = std::string(100, 'x');
        return getHostID(type, server, buffer_.data(), size);
    }
    std::string hostId() const { return buffer_.substr(0, buffer_.find('\0')); }

    static std::string row(const std::string& type, const std::string& server, const char* hostId) {
        return "[[certificate]]\ntype = \"" + type + "\"\nserver = \"" + server +
               "\"\nhost_id = \"" + hostId +
               "\"\ncertificate = \"c\"\nprivate_key = \"k\"\nca = \"a\"\n";
    }

private:
    std::string buffer_;
};

TEST_F(HostIdTest, RowIsFoundByTypeAndServerWithoutRegardToCase) {
    writeCertificates(
        row("cluster", "Primary.Example.com", "of the cluster") +
        row("host", "other.example.com", "of the other") +
        row("host", "Primary.Example.com", "of the host") +
        row("host", "primary.example.com", "of the second row"));
    EXPECT_EQ(read("primary.EXAMPLE.com", 1), 0) << log_.text();
    EXPECT_EQ(hostId(), "of the host");
    EXPECT_EQ(read("primary.example.com", 2), 0);
    EXPECT_EQ(hostId(), "of the cluster");
    EXPECT_THAT(log_.text(), IsEmpty());
}

TEST_F(HostIdTest, UnknownKeysAndTypesAreIgnored) {
    writeCertificates("x = 1\n" + row("user", "a", "1") + "more = 2\n" + row("host", "a", "2"));
    EXPECT_EQ(read("a"), 0) << log_.text();
    EXPECT_EQ(hostId(), "2");
}

TEST_F(HostIdTest, BufferMustHoldTheTerminatorToo) {
    writeCertificates(row("host", "a", "12345"));
    EXPECT_EQ(read("a", 1, 6), 0);
    EXPECT_EQ(hostId(), "12345");
    EXPECT_EQ(read("a", 1, 5), status::hostIdBufferTooSmall);
    EXPECT_EQ(hostId(), "");
    EXPECT_EQ(getHostID(1, "a", nullptr, 0), status::hostIdBufferTooSmall);
}

TEST_F(HostIdTest, NoRow) {
    writeCertificates(row("host", "a", "1"));
    for (const auto& [server, type] : std::array<std::pair<const char*, int>, 5>{
             {{"b", 1}, {"a", 2}, {"a", 0}, {"a", 3}, {nullptr, 1}}}) {
        EXPECT_EQ(read(server, type), status::noCertificateEntry);
        EXPECT_EQ(hostId(), "");
    }
    EXPECT_THAT(
        log_.lines().front(),
        EndsWith("certificates.toml: no row of type \"host\" for server \"b\""));
    writeCertificates("");
    EXPECT_EQ(read("a"), status::noCertificateEntry);
}

TEST_F(HostIdTest, NoFile) {
    EXPECT_EQ(read("a"), status::noCertificateEntry);
    EXPECT_EQ(hostId(), "");
    EXPECT_THAT(log_.text(), EndsWith("etc/certificates.toml: no such file\n"));
}

TEST_F(HostIdTest, UnreadableFile) {
    std::filesystem::create_directories(root_.file("etc/certificates.toml"));
    EXPECT_EQ(read("a"), status::malformedCertificateInfo);
    EXPECT_EQ(hostId(), "");
    EXPECT_THAT(log_.text(), EndsWith("certificates.toml: not a regular file\n"));
}

TEST_F(HostIdTest, NotToml) {
    writeCertificates("\n[[certificate]\n");
    EXPECT_EQ(read("a"), status::malformedCertificateInfo);
    EXPECT_THAT(log_.text(), HasSubstr("certificates.toml, line 2, column "));
}

TEST_F(HostIdTest, CertificateThatIsNoArrayOfTables) {
    for (const char* text : {"certificate = 1\n", "[certificate]\n", "certificate = [1]\n"}) {
        writeCertificates(text);
        EXPECT_EQ(read("a"), status::malformedCertificateInfo) << text;
        EXPECT_THAT(log_.lines().back(), EndsWith("certificate must be an array of tables"));
    }
}

/// One key of a row that is missing or unusable.
class HostIdKeyTest : public HostIdTest, public testing::WithParamInterface<const char*> {};

TEST_P(HostIdKeyTest, IsNamedInTheLogWhenItIsMissingOrUnusable) {
    const std::string key = GetParam();
    const std::string whole = row("host", "a", "1");
    const std::size_t start = whole.find(key + " = ");
    const std::size_t end = whole.find('\n', start);
    for (const std::string& value :
         {std::string(), key + " = 1", key + " = \"\"", key + " = \"a\\u0000b\""}) {
        std::string text = whole;
        text.replace(start, end - start, value);
        writeCertificates(text);
        EXPECT_EQ(read("a"), status::malformedCertificateInfo) << text;
        EXPECT_EQ(hostId(), "");
        EXPECT_THAT(log_.lines().back(), HasSubstr("certificates.toml, line "));
        EXPECT_THAT(log_.lines().back(), EndsWith(": " + key + " is missing, empty or no text"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Keys, HostIdKeyTest,
    testing::Values("type", "server", "host_id", "certificate", "private_key", "ca"));

TEST_F(HostIdTest, RowsAfterTheMatchAreNotLookedAt) {
    writeCertificates(row("host", "a", "1") + "[[certificate]]\n");
    EXPECT_EQ(read("a"), 0);
    EXPECT_EQ(read("b"), status::malformedCertificateInfo);
}

TEST_F(HostIdTest, RowsOfOtherServersNeedOnlyTypeAndServer) {
    writeCertificates("[[certificate]]\ntype = \"host\"\nserver = \"b\"\n" + row("host", "a", "1"));
    EXPECT_EQ(read("a"), 0) << log_.text();
}

}  // namespace
