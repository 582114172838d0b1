#include "arkeon/debug_log.h"
#include "support/LogReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using support::LogReader;
using testing::Each;

namespace {

constexpr int writers = 64;
constexpr std::size_t linesEach = 1000;

/// Every hundredth line is longer than a page of memory.
std::string writtenLine(std::size_t number) {
    const std::size_t filling = number % 100 == 99 ? 5000 : number % 100;
    return std::to_string(number) + ' ' + std::string(filling, 'x') + " end";
}

/// Half of the writers open the log for every line anew.
[[noreturn]] void writeLines(int writer) {
    if (writer % 2 == 1) {
        close_debug_log();
    }
    const std::string name = "writer" + std::to_string(writer);
    for (std::size_t line = 0; line < linesEach; ++line) {
        logmsg(2, writtenLine(line).c_str(), name.c_str());
    }
    _exit(0);
}

void runWriters() {
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer) {
        const pid_t child = fork();
        if (child == 0) {
            writeLines(writer);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}

TEST(DebugLog, LinesOfSeveralProcessesNeverMix) {
    const LogReader log;
    runWriters();
    std::vector<std::size_t> next(writers);
    const std::string beforeNumber = " 2 writer";
    for (const std::string& line : log.lines()) {
        const std::size_t name = line.find(beforeNumber);
        const std::size_t text = line.find(": ");
        ASSERT_LT(name, text) << line;
        std::size_t& number = next.at(std::stoul(line.substr(name + beforeNumber.size())));
        ASSERT_EQ(line.substr(text + 2), writtenLine(number)) << line;
        ++number;
    }
    EXPECT_THAT(next, Each(linesEach));
}

}  // namespace
