#include "arkeon/LoginWithUserTokenManager.h"
#include "arkeon/status.h"
#include "login/LoginFile.h"
#include "support/Environment.h"
#include "support/LogReader.h"
#include "support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using support::LogReader;
using support::ScopedVariable;
using support::TempDir;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace status = arkeon::status;

namespace {

const char* const fileName = "arkeon/logins.json";

/// A user's configuration folder and a manager for port 1556.
class LoginTest : public testing::Test {
protected:
    LoginTest() : variable_("XDG_CONFIG_HOME", home_.path()) {}

    /// The entries go into the array.
    void writeLogins(const std::string& entries, mode_t mode = 0600) const {
        home_.write(fileName, "{\"logins\": [" + entries + "]}", mode);
    }

    int find(const std::string& server = "primary.example.com", int port = 1556) {
        token_ = "before";
        return LoginWithUserTokenManager(port, "", "", "", "", 1).findToken(server, token_);
    }

    void expectRefused(std::string_view reason) {
        EXPECT_EQ(find(), status::unusableLogin);
        EXPECT_EQ(token_, "");
        EXPECT_THAT(log_.lines().back(), HasSubstr(home_.file(fileName) + ": "));
        EXPECT_THAT(log_.lines().back(), HasSubstr(std::string(reason)));
        EXPECT_THAT(log_.text(), Not(HasSubstr("secret")));
    }

    TempDir home_;
    LogReader log_;
    std::string token_;

private:
    ScopedVariable variable_;
};

const char* const goodEntry =
    R"({"server": "primary.example.com", "port": 1556, "token": "secret"})";

TEST_F(LoginTest, IsFoundByServerWithoutRegardToCaseAndPort) {
    writeLogins(
        R"({"server": "primary.example.com", "port": 1557, "token": "other port"},
           {"server": "other.example.com", "port": 1556, "token": "other server"},
           {"server": "Primary.Example.COM", "port": 1556, "token": "secret"},
           {"server": "primary.example.com", "port": 1556, "token": "second"})");
    EXPECT_EQ(find("PRIMARY.example.com"), 0) << log_.text();
    EXPECT_EQ(token_, "secret");
    EXPECT_EQ(log_.text(), "");
}

TEST_F(LoginTest, UnknownKeysAreLeftToTheLoginTool) {
    home_.write(
        fileName, R"({"version": 1, "logins": [{"server": "primary.example.com", "port": 1556,
                      "token": "!~", "user": "somebody"}]})");
    EXPECT_EQ(find(), 0);
    EXPECT_EQ(token_, "!~");
}

TEST_F(LoginTest, NoFileOrNoEntryMeansNotLoggedIn) {
    EXPECT_EQ(find(), status::notLoggedIn);
    EXPECT_EQ(token_, "");
    EXPECT_THAT(log_.text(), HasSubstr(" 16 arkeon: no login file: \"" + home_.file(fileName)));
    writeLogins("");
    EXPECT_EQ(find(), status::notLoggedIn);
    writeLogins(goodEntry);
    EXPECT_EQ(find("other.example.com"), status::notLoggedIn);
    EXPECT_EQ(find("primary.example.com", 1557), status::notLoggedIn);
    EXPECT_EQ(token_, "");
    EXPECT_THAT(log_.text(), EndsWith(": no login for primary.example.com, port 1557\n"));
}

TEST_F(LoginTest, PathThatLeadsNowhereMeansNotLoggedIn) {
    home_.write("arkeon", "a file where the folder should be");
    EXPECT_EQ(find(), status::notLoggedIn);
}

TEST_F(LoginTest, LinkThatLeadsNowhereMeansNotLoggedIn) {
    std::filesystem::create_directory(home_.file("arkeon"));
    std::filesystem::create_symlink("nowhere", home_.file(fileName));
    EXPECT_EQ(find(), status::notLoggedIn);
}

TEST_F(LoginTest, FileOpenToGroupOrOthersIsRefusedInEveryMode) {
    writeLogins(goodEntry);
    for (mode_t mode = 0; mode <= 0777; ++mode) {
        ASSERT_EQ(chmod(home_.file(fileName).c_str(), mode), 0);
        const bool isReadable = access(home_.file(fileName).c_str(), R_OK) == 0;
        if (isReadable && (mode & 077U) == 0) {
            EXPECT_EQ(find(), 0) << std::oct << mode;
        } else {
            SCOPED_TRACE(testing::Message() << std::oct << mode);
            expectRefused(isReadable ? "open to group or others" : "Permission denied");
        }
    }
}

TEST_F(LoginTest, FileOfAnotherUserIsRefused) {
    writeLogins(goodEntry);
    constexpr uid_t otherUser = 54321;
    if (geteuid() == 0) {
        ASSERT_EQ(chown(home_.file(fileName).c_str(), otherUser, getegid()), 0);
    } else {
        // Only root can give files away; this one belongs to root.
        std::filesystem::remove(home_.file(fileName));
        std::filesystem::create_symlink("/etc/passwd", home_.file(fileName));
    }
    expectRefused("not owned by the user of this process");
}

TEST_F(LoginTest, SymbolicLinkCountsAsTheFileItLeadsTo) {
    writeLogins(goodEntry);
    std::filesystem::rename(home_.file(fileName), home_.file("real.json"));
    std::filesystem::create_symlink("../real.json", home_.file(fileName));
    EXPECT_EQ(find(), 0) << log_.text();
    chmod(home_.file("real.json").c_str(), 0604);
    expectRefused("open to group or others");
}

TEST_F(LoginTest, FifoIsRefusedWithoutWaiting) {
    std::filesystem::create_directory(home_.file("arkeon"));
    ASSERT_EQ(mkfifo(home_.file(fileName).c_str(), 0600), 0);
    expectRefused("not a regular file");
}

TEST_F(LoginTest, FolderIsRefused) {
    std::filesystem::create_directories(home_.file(fileName));
    expectRefused("not a regular file");
}

TEST_F(LoginTest, LinkThatLeadsToItselfIsRefused) {
    std::filesystem::create_directory(home_.file("arkeon"));
    std::filesystem::create_symlink("logins.json", home_.file(fileName));
    expectRefused("symbolic links");
}

TEST_F(LoginTest, LargeFileIsRefused) {
    home_.write(fileName, std::string(std::size_t{16} * 1024 * 1024 + 1, ' '));
    expectRefused("larger than 16777216 bytes");
}

TEST_F(LoginTest, TextThatIsNotJsonIsRefusedAndNotQuoted) {
    for (const char* text :
         {"", "not JSON", "\"secret\"", "null", "{\"logins\": [\n{\"token\": \"secret\" secret}]}",
          "{\"logins\": []} secret", "{\"logins\": [{\"token\": \"secret\\u0000\"}]}",
          "{\"logins\": [\"\xff secret\"]}"}) {
        home_.write(fileName, text);
        expectRefused("not JSON, line ");
    }
}

TEST_F(LoginTest, JsonOfAnotherFormIsRefused) {
    for (const char* text :
         {"{}", "[]", R"({"logins": {}})", R"({"logins": null})", R"({"logins": [1]})",
          R"({"logins": [[]]})"}) {
        home_.write(fileName, text);
        expectRefused("not of the form of a login file");
    }
}

TEST_F(LoginTest, WholeFileMustHaveTheForm) {
    for (const char* entry :
         {R"({"port": 1556, "token": "secret"})", R"({"server": "b", "token": "secret"})",
          R"({"server": "b", "port": 1556})", R"({"server": 1, "port": 1556, "token": "secret"})",
          R"({"server": "b", "port": "1556", "token": "secret"})",
          R"({"server": "b", "port": 1556.0, "token": "secret"})",
          R"({"server": "b", "port": 1556, "token": 1})",
          R"({"server": "b", "port": 1556, "token": "secret", "expires": "1"})",
          R"({"server": "b", "port": 1556, "token": "secret", "expires": 1.5})",
          R"({"server": "b", "port": 1556, "token": "secret", "expires": null})"}) {
        writeLogins(std::string(goodEntry) + ", " + entry);
        expectRefused("not of the form of a login file");
    }
}

TEST_F(LoginTest, TokenThatIsNoneIsRefused) {
    for (const char* token :
         {"", " ", "secret token", "secret\\n", "secret\\t", "\\u007f", "\\u0001", "\xc3\xa4"}) {
        writeLogins(
            R"({"server": "primary.example.com", "port": 1556, "token": ")" + std::string(token) +
            R"(", "expires": 1})");
        expectRefused("the token is empty or holds a byte that is no visible ASCII");
    }
}

TEST_F(LoginTest, LoginThatHasExpired) {
    const std::time_t now = std::time(nullptr);
    const auto entry = [](std::time_t expires) {
        return R"({"server": "primary.example.com", "port": 1556, "token": "secret", "expires": )" +
               std::to_string(expires) + "}";
    };
    for (const std::time_t past : {now, now - 1, std::time_t{0}, std::time_t{-1}}) {
        writeLogins(entry(past));
        EXPECT_EQ(find(), status::loginExpired);
        EXPECT_EQ(token_, "");
    }
    EXPECT_THAT(log_.text(), EndsWith(": the login for primary.example.com has expired\n"));
    writeLogins(entry(now + 1000));
    EXPECT_EQ(find(), 0);
    EXPECT_EQ(token_, "secret");
}

TEST_F(LoginTest, LoginExpiresInTheSecondThatIsNamed) {
    writeLogins(R"({"server": "a", "port": 1, "token": "secret", "expires": 1790000000})");
    arkeon::LoginFile logins;
    ASSERT_EQ(logins.read(home_.file(fileName)), 0);
    EXPECT_EQ(logins.findToken("a", 1, 1'789'999'999, token_), 0);
    EXPECT_EQ(logins.findToken("a", 1, 1'790'000'000, token_), status::loginExpired);
}

}  // namespace
