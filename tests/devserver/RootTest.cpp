#include "devserver/Failure.h"
#include "devserver/HostListing.h"
#include "devserver/Support.h"

#include <gtest/gtest.h>

#include <jansson.h>
#include <sys/stat.h>

#include <fstream>

namespace {

using namespace devserver;
using namespace devserver::testing;
namespace fs = std::filesystem;

class RootFolder : public ::testing::Test {
protected:
    TemporaryFolder folder;
    Options options;

    void SetUp() override { options.root = (folder.path() / "root").string(); }

    fs::path file(const char* name) const { return fs::path(options.root) / name; }

    std::string failure() const {
        try {
            const Root root(options);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "none";
    }
};

unsigned int modeOf(const fs::path& path) {
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status.st_mode & 07777U;
}

TEST_F(RootFolder, FirstStartFillsIt) {
    options.names = {"primary.example.com", "other.example.com"};
    const Root root(options);
    EXPECT_EQ(
        contentOf(file("etc/master.toml")), "[primary_server]\nname = \"primary.example.com\"\n");
    const std::string rows = contentOf(file("etc/certificates.toml"));
    for (const char* name :
         {"primary.example.com", "other.example.com", "localhost", "127.0.0.1", "::1"}) {
        EXPECT_EQ(occurrences(rows, "= \"" + std::string(name) + "\"\n"), 1U) << name;
    }
    EXPECT_EQ(occurrences(rows, "type        = \"host\""), 5U);
    EXPECT_EQ(occurrences(rows, localHostId), 5U);
    for (const char* path : {"certs/host.pem", "certs/host.key", "certs/ca.pem"}) {
        EXPECT_EQ(occurrences(rows, std::string("\"../") + path + '"'), 5U) << path;
        EXPECT_NE(contentOf(file(path)).find("-----BEGIN "), std::string::npos) << path;
    }
}

TEST_F(RootFolder, EverythingIsItsOwnersAlone) {
    const mode_t before = ::umask(0);
    const Root root(options);
    ::umask(before);
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(options.root)) {
        const std::string name = entry.path().filename().string();
        if (name.find("hosts.db-") == std::string::npos) {
            EXPECT_EQ(modeOf(entry.path()), entry.is_directory() ? 0700U : 0600U) << entry.path();
        }
        ++count;
    }
    EXPECT_GE(count, 14U);
    EXPECT_EQ(modeOf(options.root), 0700U);
}

TEST_F(RootFolder, LoginHasAnEntryForEveryNameAndPort) {
    options.names = {"primary.example.com"};
    options.port = 4433;
    const Root root(options);
    json_t* json = json_load_file(file("config/arkeon/logins.json").c_str(), 0, nullptr);
    const json_t* logins = json_object_get(json, "logins");
    EXPECT_EQ(json_array_size(logins), 8U);
    std::string token;
    int ofTool = 0;
    for (std::size_t i = 0; i < json_array_size(logins); ++i) {
        const json_t* entry = json_array_get(logins, i);
        const std::string text = json_string_value(json_object_get(entry, "token"));
        EXPECT_GE(text.size(), 32U);
        EXPECT_TRUE(token.empty() || token == text);
        token = text;
        ofTool += json_integer_value(json_object_get(entry, "port")) == 1556 ? 1 : 0;
        EXPECT_EQ(json_object_get(entry, "expires"), nullptr);
    }
    EXPECT_EQ(ofTool, 4);
    json_decref(json);
}

TEST_F(RootFolder, TheListenAddressIsTheNameWhenThereIsNone) {
    options.listen = "127.9.8.7";
    const Root root(options);
    EXPECT_EQ(root.primaryName(), "127.9.8.7");
    EXPECT_NE(contentOf(file("etc/master.toml")).find("\"127.9.8.7\""), std::string::npos);
}

TEST_F(RootFolder, AServerOnEveryAddressIsReachedByTheLoopbackOne) {
    options.listen = "0.0.0.0";
    EXPECT_EQ(Root(options).primaryName(), "127.0.0.1");
}

TEST_F(RootFolder, ASecondStartKeepsWhatIsThere) {
    const char* const kept[] = {
        "ca/ca.pem",      "ca/ca.key",       "certs/ca.pem",          "certs/host.pem",
        "certs/host.key", "etc/master.toml", "etc/certificates.toml", "config/arkeon/logins.json"};
    std::vector<std::string> before;
    {
        const Root root(options);
        for (const char* name : kept) {
            before.push_back(contentOf(file(name)));
        }
    }
    const Root root(options);
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(contentOf(file(kept[i])), before[i]) << kept[i];
    }
}

TEST_F(RootFolder, ASecondStartAddsNewNames) {
    { const Root root(options); }
    const std::string token = tokenOf(options.root);
    std::ofstream(file("etc/certificates.toml"), std::ios::app) << "# by hand\n";
    options.names = {"LOCALHOST", "second.example.com"};
    options.listen = "127.9.8.7";
    Root root(options);
    const std::string rows = contentOf(file("etc/certificates.toml"));
    EXPECT_NE(rows.find("# by hand"), std::string::npos);
    EXPECT_EQ(occurrences(rows, "\"second.example.com\""), 1U);
    EXPECT_EQ(occurrences(rows, "\"127.9.8.7\""), 1U);
    EXPECT_EQ(occurrences(rows, "[[certificate]]"), 5U);
    EXPECT_EQ(occurrences(rows, "LOCALHOST"), 0U);
    const std::string logins = contentOf(file("config/arkeon/logins.json"));
    EXPECT_EQ(occurrences(logins, token), 5U);
    EXPECT_TRUE(root.database().ownerOf(token));
}

TEST_F(RootFolder, ALostLoginIsMadeAnew) {
    { const Root root(options); }
    const std::string old = tokenOf(options.root);
    fs::remove(file("config/arkeon/logins.json"));
    Root root(options);
    const std::string token = tokenOf(options.root);
    EXPECT_NE(token, old);
    EXPECT_TRUE(root.database().ownerOf(token));
}

TEST_F(RootFolder, AnInterruptedFirstStartIsCompleted) {
    { const Root root(options); }
    for (const char* name :
         {"hosts.db", "certs/host.pem", "etc/master.toml", "etc/certificates.toml"}) {
        fs::remove(file(name));
    }
    Root root(options);
    EXPECT_EQ(occurrences(contentOf(file("etc/certificates.toml")), "[[certificate]]"), 3U);
    HostRecord host;
    EXPECT_TRUE(root.database().list({})->next(host));
}

TEST_F(RootFolder, AStoppedFillingCanBeRepeated) {
    options.hosts = 50;
    int asked = 0;
    const Filling stopped{{}, [&asked] {
                              return ++asked > 20;
                          }};
    EXPECT_THROW(Root(options, stopped), Failure);
    EXPECT_EQ(asked, 21);
    ASSERT_TRUE(fs::exists(file("hosts.db")));
    std::size_t announced = 0;
    Root root(options, {[&](const fs::path&, std::size_t hosts) { announced = hosts; }, {}});
    EXPECT_EQ(announced, 50U);
    const auto listing = root.database().list({});
    std::size_t count = 0;
    for (HostRecord host; listing->next(host);) {
        ++count;
    }
    EXPECT_EQ(count, 50U);
}

TEST_F(RootFolder, ADatabaseThatLostItsContentIsAFailure) {
    { const Root root(options); }
    fs::resize_file(file("hosts.db"), 0);
    EXPECT_NE(failure().find("has lost its content"), std::string::npos);
    EXPECT_EQ(fs::file_size(file("hosts.db")), 0U);
}

TEST_F(RootFolder, LostCertificateRowsAreMadeAnewForEveryName) {
    options.names = {"primary.example.com"};
    { const Root root(options); }
    const std::string rows = contentOf(file("etc/certificates.toml"));
    fs::remove(file("etc/certificates.toml"));
    options.names.clear();
    { const Root root(options); }
    EXPECT_EQ(contentOf(file("etc/certificates.toml")), rows);
}

TEST_F(RootFolder, TheHostsCertificateAndKeyAreMadeAnewTogether) {
    for (const char* lost : {"certs/host.key", "certs/host.pem"}) {
        { const Root root(options); }
        const std::string authority = contentOf(file("certs/ca.pem"));
        const std::string key = contentOf(file("certs/host.key"));
        const std::string certificate = contentOf(file("certs/host.pem"));
        fs::remove(file(lost));
        { const Root root(options); }
        EXPECT_NE(contentOf(file("certs/host.key")), key) << lost;
        EXPECT_NE(contentOf(file("certs/host.pem")), certificate) << lost;
        EXPECT_EQ(contentOf(file("certs/ca.pem")), authority);
    }
}

TEST_F(RootFolder, ANewAuthorityIssuesEverythingAnew) {
    { const Root root(options); }
    const std::string certificate = contentOf(file("certs/host.pem"));
    const std::string key = contentOf(file("certs/host.key"));
    fs::remove_all(file("ca"));
    { const Root root(options); }
    EXPECT_EQ(contentOf(file("certs/ca.pem")), contentOf(file("ca/ca.pem")));
    EXPECT_NE(contentOf(file("certs/host.pem")), certificate);
    EXPECT_NE(contentOf(file("certs/host.key")), key);
}

TEST_F(RootFolder, ANumberOfHostsIsForANewRoot) {
    options.hosts = 3;
    { const Root root(options); }
    EXPECT_NE(failure().find("--hosts is for a new root"), std::string::npos);
}

TEST_F(RootFolder, AForeignFolderIsRefused) {
    fs::create_directory(options.root);
    std::ofstream(file("letter.txt")) << "Dear";
    EXPECT_NE(failure().find("not made by akdevserver"), std::string::npos);
    EXPECT_EQ(std::distance(fs::directory_iterator(options.root), {}), 1);
}

TEST_F(RootFolder, AnEmptyFolderIsTaken) {
    fs::create_directory(options.root);
    EXPECT_EQ(failure(), "none");
}

TEST_F(RootFolder, AFolderThatCannotBeMadeIsAFailure) {
    std::ofstream(folder.path() / "file") << "x";
    options.root = (folder.path() / "file" / "root").string();
    EXPECT_NE(failure().find("cannot make the folder"), std::string::npos);
    options.root = (folder.path() / "file").string();
    EXPECT_NE(failure().find("cannot use"), std::string::npos);
    options.root = (folder.path() / "missing" / "root").string();
    EXPECT_NE(failure().find("No such file"), std::string::npos);
}

TEST_F(RootFolder, OneServerAtATime) {
    const Root root(options);
    EXPECT_NE(failure().find("another akdevserver is using"), std::string::npos);
}

TEST_F(RootFolder, ABrokenDatabaseIsAFailure) {
    { const Root root(options); }
    std::ofstream(file("hosts.db")) << "this is no database at all, just a text of some length\n"
                                    << std::string(5000, 'x');
    EXPECT_NE(failure().find("cannot use the database"), std::string::npos);
}

TEST_F(RootFolder, ADamagedDatabaseIsAFailure) {
    options.hosts = 200;
    { const Root root(options); }
    options.hosts.reset();
    std::fstream database(file("hosts.db"));
    constexpr std::size_t page = 4096;
    database.seekp(static_cast<std::streamoff>(page * 6));
    database << std::string(page * 4, '\x5a');
    database.close();
    EXPECT_NE(failure().find("cannot use the database"), std::string::npos);
    EXPECT_EQ(failure().find('\n'), std::string::npos) << failure();
    EXPECT_EQ(failure().find("***"), std::string::npos) << failure();
}

TEST_F(RootFolder, AMalformedLoginFileIsAFailure) {
    { const Root root(options); }
    std::ofstream(file("config/arkeon/logins.json")) << "{}";
    EXPECT_NE(failure().find("logins.json is malformed"), std::string::npos);
}

TEST_F(RootFolder, AnAuthorityThatCannotBeReadIsAFailure) {
    { const Root root(options); }
    std::ofstream(file("ca/ca.key")) << "nothing";
    EXPECT_NE(failure().find("ca.pem: cannot read a private key"), std::string::npos);
    fs::remove(file("ca/ca.key"));
    EXPECT_EQ(failure().find("cannot read " + file("ca/ca.key").string()), 0U) << failure();
}

}  // namespace
