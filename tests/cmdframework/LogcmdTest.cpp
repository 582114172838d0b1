#include "cmdframework/Logcmd.h"

#include "arkeon/debug_log.h"
#include "cmdframework/Runtimecmd.h"
#include "support/LogLines.h"
#include "support/TempDir.h"
#include "support/Throws.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>

namespace {

namespace fs = std::filesystem;

/// A root with the log folder "admin".
class LogFolder {
public:
    LogFolder() { fs::create_directories(folder()); }

    const char* root() const { return dir_.path().c_str(); }
    fs::path folder() const { return dir_.path() / "admin"; }

    /// The lines of the one log file, from the level on; empty when there is no file.
    std::vector<std::string> lines() const {
        std::vector<std::string> all;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder())) {
            std::ifstream file(entry.path());
            for (std::string line; std::getline(file, line);) {
                line.erase(0, line.find(' ') + 1);  // the time
                all.push_back(line.substr(line.find(' ') + 1));
            }
        }
        return all;
    }

private:
    support::TempDir dir_;
};

using Lines = std::vector<std::string>;

TEST(Logcmd, NothingIsWrittenBeforeInit) {
    const LogFolder folder;
    const CLogcmd log;
    log.logit("early", 2);
    EXPECT_EQ(CLogcmd::use_count, 0U);
    EXPECT_TRUE(folder.lines().empty());
}

TEST(Logcmd, LinesCarryLevelAndName) {
    const LogFolder folder;
    CLogcmd log;
    log.init(folder.root(), "tool", "admin", nullptr);
    log.logit("one", 2);
    log.logit(std::string("two"), 16, "");
    log.logit("three", 2, "other");
    log.logit({"fo", "ur"}, 2);
    EXPECT_EQ(
        folder.lines(), (Lines{"2 tool: one", "16 tool: two", "2 other: three", "2 tool: four"}));
}

TEST(Logcmd, AMissingFolderIsNoFailureAndLeavesTheProgramNameEmpty) {
    const support::TempDir dir;
    static std::string lastName;
    CLogcmd log;
    log.init(dir.path().c_str(), "tool", "admin", [](int, const char*, const char* name) {
        lastName = name;
        return 0;
    });
    EXPECT_EQ(CLogcmd::use_count, 1U);
    EXPECT_FALSE(log.logDirectoryExists());
    lastName = "untouched";
    log.logit("x", 2);
    EXPECT_EQ(lastName, "");
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST(Logcmd, ASecondInitOpensNothingAndChangesNothingThatIsSet) {
    const LogFolder first;
    const LogFolder second;
    CLogcmd log;
    log.init(first.root(), "tool", "admin", nullptr);
    log.init(second.root(), "other", "elsewhere", nullptr);
    CLogcmd another;
    another.init(second.root(), "third", "admin", nullptr);
    EXPECT_EQ(CLogcmd::use_count, 3U);
    log.logit("x", 2);
    EXPECT_EQ(first.lines(), (Lines{"2 tool: x"}));
    EXPECT_TRUE(second.lines().empty());
}

TEST(Logcmd, EmptyAndNullSettingsAreNotTaken) {
    const LogFolder folder;
    CLogcmd log;
    log.init(folder.root(), nullptr, "", nullptr);
    log.init(nullptr, "tool", "admin", nullptr);
    EXPECT_TRUE(log.logDirectoryExists()) << "root and sub-directory are set now";
    static std::string lastName;
    log.init(nullptr, nullptr, nullptr, [](int, const char*, const char* name) {
        lastName = name;
        return 0;
    });
    log.logit("x", 2);
    EXPECT_EQ(lastName, "") << "the program's name is taken only with the opening of the log";
}

TEST(Logcmd, CopiesAndDefaultConstructionLeaveTheUseCountAlone) {
    LogLines lines;
    EXPECT_EQ(CLogcmd::use_count, 1U);
    std::optional<CLogcmd> other(std::in_place);
    *other = lines.log;
    EXPECT_EQ(CLogcmd::use_count, 1U);
    other->logit("by the copy", 2);
    EXPECT_EQ(LogLines::lines(), Lines{"2 by the copy"});
}

TEST(Logcmd, TheCountReachesZeroAndWrapsSoThatLaterLinesStillReachTheSameFile) {
    const LogFolder folder;
    CLogcmd log;
    log.init(folder.root(), "tool", "admin", nullptr);
    {
        const CLogcmd operationLog;
        operationLog.logit("from the operation", 2);
    }
    EXPECT_EQ(CLogcmd::use_count, 0U);
    log.logit("lost while the count is 0", 2);
    { const CLogcmd frameworkLog; }
    EXPECT_EQ(CLogcmd::use_count, 4294967295U);
    log.logit("last line", 2);
    EXPECT_EQ(folder.lines(), (Lines{"2 : from the operation", "2 tool: last line"}));
}

TEST(Logcmd, ALogThatCannotBeOpenedIsReportedWithoutStatusText) {
    const LogFolder folder;
    CLogcmd probe;
    probe.init(folder.root(), "tool", "admin", nullptr);
    close_debug_log();
    fs::path file = fs::directory_iterator(folder.folder())->path();
    fs::remove(file);
    fs::create_directory(file);  // in the place of the log
    { const CLogcmd lowersTheCount; }
    CLogcmd log;
    EXPECT_EQ(
        runTimeFailureOf([&] { log.init(folder.root(), "tool", "admin", nullptr); }),
        "There was a problem opening the log file.  Command terminated. (21) => 21");
    EXPECT_EQ(CLogcmd::use_count, 0U) << "the count is not raised";
}

TEST(Logcmd, RunTimeFailuresAreLoggedAsFailures) {
    LogLines lines;
    lines.log.logit(CRuntimecmd(commandNameIsNull));
    EXPECT_EQ(LogLines::lines(), Lines{"16 Run time failure: The top level command name is NULL."});
}

TEST(Logcmd, ARunTimeFailureIsCutAt1023Bytes) {
    LogLines lines;
    lines.log.logit(CRuntimecmd(fileNotOpened, std::string(2000, 'x').c_str()));
    ASSERT_EQ(LogLines::lines().size(), 1U);
    EXPECT_EQ(LogLines::lines().front().size(), 3U + 1023U);
}

TEST(Logcmd, TheCallbackReceivesEveryLineWhole) {
    LogLines lines;
    lines.log.logit("one", 2);
    lines.log.logit({"t", "w", "o"}, 16);
    EXPECT_EQ(LogLines::lines(), (Lines{"2 one", "16 two"}));
}

}  // namespace
