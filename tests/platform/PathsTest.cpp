#include "config/Paths.h"
#include "config/ReadFile.h"
#include "support/Environment.h"
#include "support/TempDir.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using support::ScopedVariable;
using support::TempDir;

namespace {

TEST(RootDirectory, IsTheVariableOrTheInstalledPlace) {
    const ScopedVariable set("ARKEON_ROOT", "/some/where");
    EXPECT_EQ(arkeon::rootDirectory(), "/some/where");
    const ScopedVariable empty("ARKEON_ROOT", "");
    EXPECT_EQ(arkeon::rootDirectory(), "/usr/zelvik/arkeon");
    const ScopedVariable unset("ARKEON_ROOT", std::nullopt);
    EXPECT_EQ(arkeon::rootDirectory(), "/usr/zelvik/arkeon");
}

TEST(LoginFilePath, IsBelowTheConfigurationFolder) {
    const ScopedVariable home("HOME", "/home/somebody");
    const ScopedVariable config("XDG_CONFIG_HOME", "/config");
    EXPECT_EQ(arkeon::loginFile(), "/config/arkeon/logins.json");
}

TEST(LoginFilePath, IsBelowHomeByDefault) {
    const ScopedVariable home("HOME", "/home/somebody");
    for (const char* value : {"", "relative/config"}) {
        const ScopedVariable config("XDG_CONFIG_HOME", value);
        EXPECT_EQ(arkeon::loginFile(), "/home/somebody/.config/arkeon/logins.json");
    }
    const ScopedVariable config("XDG_CONFIG_HOME", std::nullopt);
    EXPECT_EQ(arkeon::loginFile(), "/home/somebody/.config/arkeon/logins.json");
}

TEST(LoginFilePath, HomeComesFromThePasswordDatabaseOtherwise) {
    const ScopedVariable config("XDG_CONFIG_HOME", std::nullopt);
    const passwd* user = getpwuid(geteuid());
    const std::string expected =
        user == nullptr ? "" : std::string(user->pw_dir) + "/.config/arkeon/logins.json";
    for (const auto& value :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>("relative")}) {
        const ScopedVariable home("HOME", value);
        EXPECT_EQ(arkeon::loginFile(), expected);
    }
}

/// Runs in a process of its own, as a user that the password database does not know.
[[noreturn]] void lookForHomeOfNobody() {
    constexpr uid_t unknownUser = 54321;
    const uid_t before = geteuid();
    const bool changed = before != 0 || seteuid(unknownUser) == 0;
    unsetenv("HOME");
    unsetenv("XDG_CONFIG_HOME");
    const bool known = getpwuid(geteuid()) != nullptr;
    const bool right = changed && arkeon::loginFile().empty() != known;
    const bool back = seteuid(before) == 0;
    std::exit(right && back ? 0 : 1);
}

TEST(LoginFilePathDeathTest, UserWithoutHomeHasNone) {
    EXPECT_EXIT(lookForHomeOfNobody(), testing::ExitedWithCode(0), "");
}

TEST(ReadFile, GivesContentModeAndOwner) {
    const TempDir folder;
    const std::string content("a\0b\n", 4);
    const arkeon::FileContent file = arkeon::readFile(folder.write("file", content, 0640));
    EXPECT_EQ(file.error, 0);
    EXPECT_EQ(file.text, content);
    EXPECT_EQ(file.mode & 07777U, 0640U);
    EXPECT_EQ(file.owner, geteuid());
}

TEST(ReadFile, FollowsSymbolicLinksToTheFileThatCounts) {
    const TempDir folder;
    std::filesystem::create_symlink(folder.write("file", "text", 0604), folder.file("link"));
    const arkeon::FileContent file = arkeon::readFile(folder.file("link"));
    EXPECT_EQ(file.text, "text");
    EXPECT_EQ(file.mode & 07777U, 0604U);
}

TEST(ReadFile, LimitIsInclusive) {
    const TempDir folder;
    const std::string path = folder.write("file", std::string(100'000, 'x'));
    EXPECT_EQ(arkeon::readFile(path, 100'000).text.size(), 100'000U);
    const arkeon::FileContent tooLarge = arkeon::readFile(path, 99'999);
    EXPECT_EQ(tooLarge.error, EFBIG);
    EXPECT_EQ(tooLarge.reason, "larger than 99999 bytes");
    EXPECT_EQ(tooLarge.text, "");
}

TEST(ReadFile, RegularFilesOnlyAndWithoutWaiting) {
    const TempDir folder;
    ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);
    for (const std::string& path :
         {folder.file("fifo"), folder.path().string(), std::string("/dev/zero")}) {
        const arkeon::FileContent file = arkeon::readFile(path);
        EXPECT_EQ(file.error, EINVAL) << path;
        EXPECT_EQ(file.reason, "not a regular file") << path;
    }
}

TEST(ReadFile, FilesThatCannotBeOpenedOrRead) {
    const TempDir folder;
    EXPECT_EQ(arkeon::readFile(folder.file("missing")).error, ENOENT);
    EXPECT_EQ(arkeon::readFile("").error, ENOENT);
    EXPECT_EQ(arkeon::readFile(folder.write("file", "") + "/x").error, ENOTDIR);
    std::filesystem::create_symlink("loop", folder.file("loop"));
    EXPECT_EQ(arkeon::readFile(folder.file("loop")).error, ELOOP);
    // A regular file whose first page cannot be read: nothing is mapped at address 0.
    EXPECT_EQ(arkeon::readFile("/proc/self/mem").error, EIO);
}

}  // namespace
