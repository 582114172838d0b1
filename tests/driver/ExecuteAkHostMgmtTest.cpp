#include "driver/ExecuteAkHostMgmt.h"

#include "support/CommandLine.h"
#include "support/Streams.h"
#include "support/TempDir.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <jansson.h>
#include <sys/stat.h>
#include <unistd.h>

/// The arguments' copy lives until the process ends; a second run in one process leaves the first
/// one's behind. LeakSanitizer calls this.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:copyArguments";
}

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// One run of the program with a log folder of its own.
class ProgramRun {
public:
    explicit ProgramRun(const std::vector<std::string>& options, bool withLog = true) {
        if (withLog) {
            fs::create_directory(logFolder());
        }
        execute(options);
    }

    /// A run whose log folder was prepared by `prepare`.
    ProgramRun(const std::vector<std::string>& options, void (*prepare)(const fs::path& folder)) {
        fs::create_directory(logFolder());
        prepare(logFolder());
        execute(options);
    }

    /// The log's lines from the level on.
    Lines log() const {
        Lines lines;
        for (const fs::directory_entry& entry : fs::directory_iterator(logFolder())) {
            std::istringstream file(support::contentOf(entry.path().string()));
            for (std::string line; std::getline(file, line);) {
                line.erase(0, line.find(' ') + 1);
                lines.push_back(line.substr(line.find(' ') + 1));
            }
        }
        return lines;
    }

    bool hasLogFolder() const { return fs::exists(logFolder()); }

    int status = -1;
    Printed printed;

private:
    fs::path logFolder() const { return dir_.path() / "admin"; }

    void execute(std::vector<std::string> options) {
        options.insert(options.begin(), "/usr/bin/akhostmgmt");
        CommandLine line(options);
        printed = printedBy(
            [&] { status = execute_akhostmgmt_in(dir_.path().c_str(), line.argc(), line.argv()); });
    }

    support::TempDir dir_;
};

constexpr const char* topLevelHelp =
    "\nUSAGE:\n\n"
    "akhostmgmt {{-a | -add} { {-i | -hostid} <hostid> | {-n | -host} <host>}\n"
    "\t {-hm | -mappingname} <mappingname>\n"
    "\t [-is | -isshared] [{-r | -reason} <reason>]\n"
    "\t [{-s | -server} <master_server>] }\n"
    "akhostmgmt { {-d | -delete} { {-i | -hostid} <hostid> | {-n | -host} <host>}\n"
    "\t {-hm | -mappingname} <mappingname>\n"
    "\t [{-r | -reason} <reason>]\n"
    "\t [{-s | -server} <master_server>] }\n"
    "akhostmgmt { {-li | -list} [{-l | -short} | {-j | -json} | { -jc | -json_compact}] \n"
    "\t [{-i | -hostid} <hostid> | \n"
    "\t {-n | -host} <host> | \n"
    "\t {-ap | -approved} | \n"
    "\t {-p | -pending} | \n"
    "\t {-cf | -conflict}]\n"
    "\t [{-s | -server} <master_server>] }\n"
    "akhostmgmt { {-ac | -addcomment}\n"
    "\t { {-i | -hostid} <hostid> | {-n | -host} <host> }\n"
    "\t {-c | -comment} <comment> } [{-s | -server} <master_server>] }\n"
    "akhostmgmt { {-dc | -deletecomment}\n"
    "\t { {-i | -hostid} <hostid> | {-n | -host} <host> }\n"
    "\t [{-s | -server} <master_server>] }\n"
    "akhostmgmt {{-aa | -allowautoreissuecert}\n"
    "\t { {-i | -hostid} <hostid> | {-n | -host} <host> }\n"
    "\t {-ar | -autoreissue} <0/1> } [{-r | -reason} <reason>]\n"
    "\t [{-s | -server} <master_server>] }\n"
    "akhostmgmt {{-ah | -addhost} {-n | -host} <host> }\n"
    "\t [{-r | -reason} <reason>] [{-s | -server} <master_server>] }\n"
    "akhostmgmt {{-uh | -updatehost} { {-i | -hostid} <hostid> | {-n | -host} <host>}\n"
    "\t {-nh | -newhostname} <newhostname>\n"
    "\t [{-r | -reason} <reason>]\n"
    "\t [{-s | -server} <master_server>] }\n"
    "akhostmgmt {-h | -help}\n\n"
    "Description:\n"
    "akhostmgmt command is used to manage host ID-to-host name (or IP address)\n"
    "mappings. A host can be identified with alternate names. This command is\n"
    "used to map these alternate names to the respective host ID. You can add,\n"
    "delete, list the mappings using the command.\n"
    "\nUse akhostmgmt [operation] -help\n\n";

TEST(TopLevelHelp, IsPrintedForHelpAlone) {
    for (const char* option : {"-help", "-h", "-HELP", "-H"}) {
        const ProgramRun run({option});
        EXPECT_EQ(run.status, 0) << option;
        EXPECT_EQ(run.printed.out, topLevelHelp);
        EXPECT_EQ(run.printed.err, "");
    }
}

TEST(TopLevelHelp, IsNotLogged) {
    EXPECT_TRUE(ProgramRun({"-help"}).log().empty());
}

TEST(UsageFailures, BeforeAnOperationShowTheTopLevelHelp) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{}, "An invalid option was used.\n"},
        {{"-unknown"}, "An invalid option was used.\n"},
        {{"-adds", "-hostid", "x"}, "An invalid option was used.\n"},
        {{"-help", "extra"}, "An invalid option was used.\n"},
        {{"-h", "-unknown"}, "An invalid option was used.\n"},
        {{"list"}, "Missing option character on parameter.\nlist\n"},
        {{"-list", "-LIST"}, "The following option was entered more than once:\nLIST\n"},
    };
    for (const auto& [options, text] : rows) {
        const ProgramRun run(options);
        EXPECT_EQ(run.status, 144);
        EXPECT_EQ(run.printed.err, text);
        EXPECT_EQ(run.printed.out, topLevelHelp);
    }
}

TEST(UsageFailures, OfAnOperationShowItsUsage) {
    const ProgramRun run({"-list", "-unknown"});
    EXPECT_EQ(run.status, 144);
    EXPECT_EQ(run.printed.err, "An invalid option was used.\nunknown\n");
    EXPECT_EQ(run.printed.out.find("\nUSAGE:\n\nakhostmgmt { {-li"), 0U);
    EXPECT_NE(run.printed.out.find("akhostmgmt -list -conflict\n"), std::string::npos);
}

TEST(UsageFailures, AreLoggedWithTheResult) {
    EXPECT_EQ(
        ProgramRun({"list"}).log(),
        (Lines{
            "2 akhostmgmt: Missing option character on parameter.\\nlist",
            "2 akhostmgmt: Command did not complete successfully.",
            "2 akhostmgmt: Return value is: 144"}));
}

TEST(OperationHelp, PrintsTheUsageAndSucceeds) {
    for (const Lines& options :
         {Lines{"-list", "-help"}, {"-help", "-list"}, {"-li", "-h"}, {"-list", "-help", "x"}}) {
        const ProgramRun run(options);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.printed.err, "");
        EXPECT_EQ(run.printed.out.find("\nUSAGE:\n\nakhostmgmt { {-li"), 0U);
    }
}

TEST(OperationHelp, IsLoggedLikeAnyRun) {
    EXPECT_EQ(
        ProgramRun({"-list", "-h"}).log(),
        (Lines{
            "2 : akhostmgmt -list  -h", "2 akhostmgmt: Help requested.",
            "2 akhostmgmt: Return value is: 0"}));
}

TEST(TheLog, HasTheLastLinesAlthoughItWasClosedWithTheOperation) {
    const ProgramRun run({"-list", "-server", "no server"});
    EXPECT_EQ(run.status, 7626);
    const Lines log = run.log();
    EXPECT_EQ(log.front(), "2 : akhostmgmt -list  -server no server");
    EXPECT_EQ(log[log.size() - 2], "2 akhostmgmt: Command did not complete successfully.");
    EXPECT_EQ(log.back(), "2 akhostmgmt: Return value is: 7626");
}

TEST(TheLog, AMissingFolderIsNoFailure) {
    const ProgramRun run({"-list", "-h"}, false);
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(run.hasLogFolder()) << "nothing is created";
}

TEST(TheLog, OneThatCannotBeOpenedEndsTheRunWithTheOpenersStatus) {
    const ProgramRun run({"-list"}, [](const fs::path& folder) {
        // Whatever the date is when the run opens its log, something else is there.
        const std::time_t now = std::time(nullptr);
        for (const std::time_t when : {now, now + 86400}) {
            char name[64];
            std::tm day{};
            localtime_r(&when, &day);
            std::strftime(name, sizeof name, "admin.%Y%m%d.log", &day);
            ASSERT_EQ(mkfifo((folder / name).c_str(), 0600), 0);
        }
    });
    EXPECT_EQ(
        run.printed.err, "There was a problem opening the log file.  Command terminated. (" +
                             std::to_string(ENXIO) + ")\n");
    EXPECT_EQ(run.status, ENXIO) << "a FIFO without a reader";
    EXPECT_EQ(run.printed.out, "");
}

/// Standard output on another file while the object lives.
class StandardOutput {
public:
    explicit StandardOutput(int descriptor) : saved_(dup(1)) {
        dup2(descriptor, 1);
        close(descriptor);
    }
    ~StandardOutput() {
        dup2(saved_, 1);
        close(saved_);
    }
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

private:
    int saved_;
};

std::string errorsWithOutputOn(int descriptor, std::vector<std::string> options, int expected) {
    options.insert(options.begin(), "akhostmgmt");
    CommandLine line(options);
    const support::TempDir dir;
    testing::internal::CaptureStderr();
    {
        const StandardOutput redirected(descriptor);
        EXPECT_EQ(execute_akhostmgmt_in(dir.path().c_str(), line.argc(), line.argv()), expected);
    }
    return testing::internal::GetCapturedStderr();
}

TEST(LostOutput, IsAFailureOfARunThatHadNone) {
    EXPECT_EQ(
        errorsWithOutputOn(open("/dev/full", O_WRONLY), {"-help"}, 7651).find("Exit Status 7651: "),
        0U);
}

TEST(LostOutput, IsSaidButLeavesAnotherStatusAlone) {
    const std::string errors = errorsWithOutputOn(open("/dev/full", O_WRONLY), {"-unknown"}, 144);
    EXPECT_EQ(errors.find("An invalid option was used.\nExit Status 7651: "), 0U) << errors;
}

TEST(LostOutput, AReaderThatWentAwayIsNoNews) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(errorsWithOutputOn(ends[1], {"-help"}, 7651), "");
    std::signal(SIGPIPE, before);
}

TEST(FileSizeLimit, DoesNotEndTheProcess) {
    const ProgramRun run({"-help"});
    EXPECT_EQ(std::signal(SIGXFSZ, SIG_DFL), SIG_IGN);
}

TEST(OutOfMemory, IsOneLineAndStatus20) {
    CommandLine line({"akhostmgmt", "-list"});
    const support::TempDir dir;
    int status = -1;
    json_set_alloc_funcs([](std::size_t) -> void* { return nullptr; }, std::free);
    const Printed printed =
        printedBy([&] { status = runProcess(dir.path().c_str(), line.argc(), line.argv()); });
    json_set_alloc_funcs(std::malloc, std::free);
    EXPECT_EQ(status, 20);
    EXPECT_EQ(
        printed.err, "Exit Status 20: There is not enough memory; check whether the change was "
                     "made before trying again.\n");
    EXPECT_EQ(printed.out, "");
}

TEST(ShellStatus, KeepsFailuresVisibleInEightBits) {
    for (const auto& [status, shell] : {
             std::pair{0, 0},
             std::pair{1, 1},
             std::pair{144, 144},
             std::pair{7610, 7610},
             std::pair{128, 128},
             std::pair{256, 255},
             std::pair{384, 384},
             std::pair{7680, 255},
             std::pair{8704, 255},
             std::pair{-256, 255},
             std::pair{-1, -1},
         }) {
        EXPECT_EQ(shellStatus(status), shell) << status;
    }
}

}  // namespace
