#include "arkeon/debug_log.h"

#include "arkeon/text.h"
#include "log/LogFile.h"
#include "log/LogLine.h"
#include "support/Environment.h"
#include "support/LogReader.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using support::LogReader;
using support::TempDir;
using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;

namespace {

/// The text of the only line logged, without what stands before it.
std::string textOf(const LogReader& log) {
    const std::vector<std::string> lines = log.lines();
    EXPECT_THAT(lines, SizeIs(1));
    const std::string& line = lines.empty() ? std::string() : lines.front();
    const std::size_t colon = line.find(": ");
    return colon == std::string::npos ? std::string() : line.substr(colon + 2);
}

TEST(DebugLog, LineHasTimeProcessLevelNameAndText) {
    const LogReader log;
    logmsg(16, "some text", "name");
    const std::regex form(
        R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d{4} (\d+) 16 name: some text\n)");
    std::smatch match;
    const std::string text = log.text();
    ASSERT_TRUE(std::regex_match(text, match, form)) << text;
    EXPECT_EQ(match[1], std::to_string(getpid()));
}

TEST(DebugLog, NameMayBeEmptyOrMissing) {
    const LogReader log;
    logmsg(2, "text", "");
    logmsg(2, "text", static_cast<const char*>(nullptr));
    EXPECT_THAT(log.lines(), ElementsAre(EndsWith(" 2 : text"), EndsWith(" 2 : text")));
}

TEST(DebugLog, MissingTextIsEmpty) {
    const LogReader log;
    logmsg(2, static_cast<const char*>(nullptr), "name");
    EXPECT_EQ(textOf(log), "");
}

TEST(DebugLog, PiecesAreOneText) {
    const LogReader log;
    logmsg(2, {"one ", "", "two", "\n"}, "name");
    EXPECT_EQ(textOf(log), "one two");
}

TEST(DebugLog, OneFinalNewlineIsDropped) {
    const LogReader log;
    logmsg(2, "text\n\n", "name");
    EXPECT_EQ(textOf(log), "text\\n");
}

TEST(DebugLog, NoTextCanForgeALine) {
    const LogReader log;
    logmsg(2, "a\n2026-11-21T08:15:30.123+0100 1 2 x: forged\r\n", "name");
    logmsg(2, "text", "n\na\tm\x1b");
    ASSERT_THAT(log.lines(), SizeIs(2));
    EXPECT_THAT(
        log.lines().at(0), EndsWith("name: a\\n2026-11-21T08:15:30.123+0100 1 2 x: forged\\x0d"));
    EXPECT_THAT(log.lines().at(1), EndsWith(" n\\na\\tm\\x1b: text"));
}

TEST(DebugLog, ControlCharactersAreVisible) {
    const LogReader log;
    const std::string text("\t\x1b[m\x7f\0\xc2\x85\x9b|\xc3\xa4\xe2\x82\xac\xff", 16);
    logmsg(2, {text}, "name");
    EXPECT_EQ(textOf(log), "\\t\\x1b[m\\x7f\\x00\\xc2\\x85\\x9b|\xc3\xa4\xe2\x82\xac\xff");
}

TEST(DebugLog, TextAtTheLimitIsWhole) {
    const LogReader log;
    const std::string text(65536, 'x');
    logmsg(2, (text + "\n").c_str(), "name");
    EXPECT_EQ(textOf(log), text);
}

TEST(DebugLog, LongerTextIsCutAndTheLineSaysHowLongItWas) {
    const LogReader log;
    logmsg(2, std::string(65537, 'x').c_str(), "name");
    EXPECT_EQ(textOf(log), std::string(65536, 'x') + "... [cut, 65537 bytes in all]");
}

TEST(DebugLog, CutDoesNotSplitALetter) {
    const LogReader log;
    const std::string fitting(65535, 'x');
    logmsg(2, {fitting, "\xc3\xa4", "never reached"}, "name");
    EXPECT_EQ(textOf(log), fitting + "... [cut, 65550 bytes in all]");
}

TEST(DebugLog, LinesAreAppended) {
    const LogReader log;
    logmsg(2, "one", "name");
    logmsg(2, "two", "name");
    EXPECT_THAT(log.lines(), ElementsAre(EndsWith(": one"), EndsWith(": two")));
}

TEST(DebugLog, LinesAreAppendedAfterTheLogWasClosed) {
    const LogReader log;
    logmsg(2, "one", "name");
    close_debug_log();
    close_debug_log();
    logmsg(2, "two", "name");
    logmsg(2, "three", "name");
    EXPECT_THAT(
        log.lines(), ElementsAre(EndsWith(": one"), EndsWith(": two"), EndsWith(": three")));
}

TEST(DebugLog, ClosedLogThatWasReplacedIsNotWritten) {
    const LogReader log;
    const std::string path = log.path();
    const TempDir elsewhere;
    const std::string victim = elsewhere.write("victim", "");
    close_debug_log();
    std::filesystem::remove(path);
    std::filesystem::create_symlink(victim, path);
    logmsg(2, "text", "name");
    EXPECT_EQ(support::contentOf(victim), "");
}

TEST(DebugLog, CallersErrnoStays) {
    const LogReader log;
    close_debug_log();
    std::filesystem::remove_all(std::filesystem::path(log.path()).parent_path());
    errno = EDOM;
    logmsg(2, "text", "name");
    EXPECT_EQ(errno, EDOM);
}

TEST(DebugLog, WithoutAnOpenLogNothingHappens) {
    logmsg(2, "text", "name");
    close_debug_log();
    logmsg(2, {"text", "more"}, "name");
}

std::vector<std::string> linesOf(const std::string& path) {
    std::istringstream text(support::contentOf(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Opens a log in a folder of its own.
class OpenDebugLogTest : public testing::Test {
public:
    ~OpenDebugLogTest() override { close_debug_log(); }

protected:
    OpenDebugLogTest() {
        std::filesystem::create_directory(folder_.path() / "admin");
        std::tm local{};
        arkeon::localTime(std::time(nullptr), &local);
        std::array<char, 32> day{};
        std::strftime(day.data(), day.size(), "%Y%m%d", &local);
        path_ = folder_.file(std::string("admin/tool.") + day.data() + ".log");
    }

    int openLog(unsigned mode = 0666) {
        status_ = -1;
        return open_debug_log(folder_.path().c_str(), "admin", "tool", mode, &status_);
    }

    void expectRefusal(int status) {
        EXPECT_EQ(openLog(), -1);
        EXPECT_EQ(status_, status) << std::strerror(status_);
    }

    TempDir folder_;
    std::string path_;
    int status_ = -1;
};

TEST_F(OpenDebugLogTest, FileIsNamedAfterTheLocalDay) {
    EXPECT_GE(openLog(), 0);
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(path_)) << path_;
}

TEST_F(OpenDebugLogTest, FileIsCreatedWithTheModeLessTheUmask) {
    const mode_t before = umask(027);
    EXPECT_GE(openLog(0666), 0);
    umask(before);
    struct stat facts {};
    ASSERT_EQ(stat(path_.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777U, 0640U);
}

TEST_F(OpenDebugLogTest, ExistingFileIsAppendedTo) {
    std::filesystem::create_directory(folder_.path() / "x");
    folder_.write(path_.substr(folder_.path().string().size() + 1), "old\n");
    EXPECT_GE(openLog(), 0);
    logmsg(2, "new", "name");
    const std::string text = support::contentOf(path_);
    EXPECT_TRUE(text.starts_with("old\n")) << text;
    EXPECT_TRUE(text.ends_with(": new\n")) << text;
}

TEST_F(OpenDebugLogTest, MissingFolder) {
    std::filesystem::remove(folder_.path() / "admin");
    expectRefusal(ENOENT);
}

TEST_F(OpenDebugLogTest, SymbolicLink) {
    const std::string target = folder_.write("target", "");
    std::filesystem::create_symlink(target, path_);
    expectRefusal(ELOOP);
}

TEST_F(OpenDebugLogTest, FileWithMoreThanOneLink) {
    std::filesystem::create_hard_link(folder_.write("target", ""), path_);
    expectRefusal(EMLINK);
}

TEST_F(OpenDebugLogTest, FifoWithoutReaderDoesNotHang) {
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    expectRefusal(ENXIO);
}

TEST_F(OpenDebugLogTest, FifoWithReader) {
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    expectRefusal(EINVAL);
    close(reader);
}

TEST_F(OpenDebugLogTest, Folder) {
    std::filesystem::create_directory(path_);
    expectRefusal(EISDIR);
}

TEST_F(OpenDebugLogTest, Device) {
    arkeon::LogFile file;
    EXPECT_EQ(file.open("/dev/full", 0600), EINVAL);
    file.append("text");
    EXPECT_FALSE(file.known());
}

TEST_F(OpenDebugLogTest, FailureKeepsTheLogBefore) {
    EXPECT_GE(openLog(), 0);
    EXPECT_EQ(open_debug_log(folder_.path().c_str(), "nowhere", "tool", 0666, &status_), -1);
    logmsg(2, "text", "name");
    EXPECT_TRUE(support::contentOf(path_).ends_with(": text\n"));
}

TEST_F(OpenDebugLogTest, OpeningAgainChangesTheLog) {
    EXPECT_GE(openLog(), 0);
    std::filesystem::create_directory(folder_.path() / "other");
    EXPECT_GE(open_debug_log(folder_.path().c_str(), "other", "tool", 0666, &status_), 0);
    logmsg(2, "text", "name");
    EXPECT_EQ(support::contentOf(path_), "");
}

TEST_F(OpenDebugLogTest, LogThatIsGoneOrFullChangesNothing) {
    EXPECT_GE(openLog(), 0);
    close_debug_log();
    std::filesystem::remove_all(folder_.path() / "admin");
    logmsg(2, "text", "name");
    EXPECT_FALSE(std::filesystem::exists(path_));
}

/// While the object lives, no file of the process may grow beyond 100 bytes.
class FullDisk {
public:
    FullDisk() {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{100, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
};

void logOverTheLimit() {
    const FullDisk disk;
    for (int lines = 0; lines < 10; ++lines) {
        logmsg(2, "a line that will not fit for long", "name");
    }
}

[[noreturn]] void logOverTheLimitAndExit() {
    logOverTheLimit();
    std::exit(0);
}

TEST_F(OpenDebugLogTest, LogThatMayNotGrowDoesNotEndTheProcess) {
    EXPECT_GE(openLog(), 0);
    EXPECT_EXIT(logOverTheLimitAndExit(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(linesOf(path_).size(), 1U);
}

TEST_F(OpenDebugLogTest, LineThatAFullDiskCutsIsTakenBack) {
    EXPECT_GE(openLog(), 0);
    logOverTheLimit();
    logmsg(2, "after", "name");
    const std::vector<std::string> lines = linesOf(path_);
    ASSERT_EQ(lines.size(), 2U) << support::contentOf(path_);
    EXPECT_TRUE(lines[0].ends_with(": a line that will not fit for long"));
    EXPECT_TRUE(lines[1].ends_with(": after"));
}

[[noreturn]] void logWithClosedStreams(const std::string& folder) {
    int status = 0;
    for (const int descriptor : {0, 1, 2}) {
        close(descriptor);
    }
    const bool opened = open_debug_log(folder.c_str(), "admin", "tool", 0600, &status) >= 0;
    const bool free = fcntl(STDOUT_FILENO, F_GETFD) == -1 && fcntl(STDIN_FILENO, F_GETFD) == -1;
    logmsg(2, "text", "name");
    std::exit(opened && free ? 0 : 1);
}

TEST_F(OpenDebugLogTest, LogDoesNotTakeThePlaceOfAClosedStream) {
    EXPECT_EXIT(logWithClosedStreams(folder_.path()), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(support::contentOf(path_).ends_with(": text\n"));
}

TEST(LogLine, TimeIsLocalWithMillisecondsAndOffset) {
    const support::ScopedVariable zone("TZ", "CET-1");
    tzset();
    const arkeon::LogStamp stamp{{1'795'245'330, 123'999'999}, 42, 2, "tool"};
    EXPECT_EQ(arkeon::logLine(stamp, {"text"}), "2026-11-21T08:15:30.123+0100 42 2 tool: text\n");
    EXPECT_EQ(arkeon::logDay(1'795'245'330), "20261121");
}

}  // namespace
