#include "arkeon/console.h"

#include "support/TempDir.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

using arkeon::Console;

namespace {

const std::string hostile("name\x1b[2J\r\x7f\xc2\x9b\x9b\xff\0end\n", 19);
const std::string hostileShown = "name^[[2J^M^?\\x9b\\x9b\\xff^@end\n";

/// Reads what is there, up to the end or until nothing comes.
std::string drain(int descriptor) {
    std::string text;
    std::array<char, 4096> piece{};
    pollfd waiting{descriptor, POLLIN, 0};
    while (poll(&waiting, 1, 200) > 0) {
        const ssize_t count = read(descriptor, piece.data(), piece.size());
        if (count <= 0) {
            break;
        }
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return text;
}

class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC), 0); }
    ~Pipe() {
        closeReader();
        close(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    int reader() const { return ends_[0]; }
    int writer() const { return ends_[1]; }
    void closeReader() {
        if (ends_[0] >= 0) {
            close(ends_[0]);
        }
        ends_[0] = -1;
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

/// A pseudo-terminal that passes bytes on unchanged.
class Terminal {
public:
    Terminal() {
        termios mode{};
        cfmakeraw(&mode);
        EXPECT_EQ(openpty(&screen_, &line_, nullptr, &mode, nullptr), 0);
    }
    ~Terminal() {
        close(line_);
        close(screen_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    int screen() const { return screen_; }
    int line() const { return line_; }

private:
    int screen_ = -1;
    int line_ = -1;
};

TEST(Console, BytesAreExactOnAPipe) {
    const Pipe output;
    const Pipe error;
    Console console(output.writer(), error.writer());
    console.write(hostile);
    EXPECT_TRUE(console.flush());
    console.writeError(hostile);
    EXPECT_EQ(drain(output.reader()), hostile);
    EXPECT_EQ(drain(error.reader()), hostile);
}

TEST(Console, BytesAreExactInAFile) {
    const support::TempDir folder;
    const std::string path = folder.write("output", "");
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    {
        Console console(file, file);
        console.write(hostile);
    }
    close(file);
    EXPECT_EQ(support::contentOf(path), hostile) << "the destructor writes what is left";
}

TEST(Console, TerminalShowsControlCharactersInVisibleForm) {
    const Terminal terminal;
    Console console(terminal.line(), terminal.line());
    console.write(hostile);
    EXPECT_TRUE(console.flush());
    EXPECT_EQ(drain(terminal.screen()), hostileShown);
    console.writeError(hostile);
    EXPECT_EQ(drain(terminal.screen()), hostileShown);
}

TEST(Console, EachStreamIsATerminalOnItsOwn) {
    const Terminal terminal;
    const Pipe pipe;
    Console errorOnTerminal(pipe.writer(), terminal.line());
    errorOnTerminal.write("\x1b");
    errorOnTerminal.writeError("\x1b");
    EXPECT_EQ(drain(pipe.reader()), "\x1b");
    EXPECT_EQ(drain(terminal.screen()), "^[");
    Console outputOnTerminal(terminal.line(), pipe.writer());
    outputOnTerminal.write("\x1b");
    outputOnTerminal.writeError("\x1b");
    EXPECT_EQ(drain(pipe.reader()), "\x1b");
    EXPECT_EQ(drain(terminal.screen()), "^[");
}

TEST(Console, OutputIsBufferedAndComesBeforeALaterError) {
    const Pipe both;
    Console console(both.writer(), both.writer());
    console.write("one ");
    console.write("two ");
    EXPECT_EQ(drain(both.reader()), "");
    console.writeError("three");
    EXPECT_EQ(drain(both.reader()), "one two three");
    EXPECT_TRUE(console.flush());
    EXPECT_EQ(drain(both.reader()), "");
}

TEST(Console, LargeOutputDoesNotPileUp) {
    const Pipe output;
    Console console(output.writer(), output.writer());
    std::string received;
    std::thread reader([&] { received = drain(output.reader()); });
    std::string sent;
    for (int line = 0; line < 20000; ++line) {
        const std::string text = "line " + std::to_string(line) + "\n";
        console.write(text);
        sent += text;
    }
    EXPECT_TRUE(console.flush());
    reader.join();
    EXPECT_EQ(received, sent);
}

TEST(Console, LargeTextComesInItsTurn) {
    const support::TempDir folder;
    const std::string path = folder.write("output", "");
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    const std::string large(1000000, 'x');
    {
        Console console(file, file);
        console.write("before");
        console.write(large);
        EXPECT_EQ(support::contentOf(path), "before" + large) << "written through";
        console.write("after");
    }
    close(file);
    EXPECT_EQ(support::contentOf(path), "before" + large + "after");
}

TEST(Console, LargeTextOnAFullDiskIsAFailure) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    Console console(full, full);
    console.write(std::string(1000000, 'x'));
    EXPECT_EQ(console.outputError(), ENOSPC);
    EXPECT_FALSE(console.flush());
    close(full);
}

TEST(Console, DescriptorThatWouldBlockIsWaitedFor) {
    const Pipe output;
    ASSERT_EQ(fcntl(output.writer(), F_SETFL, O_NONBLOCK), 0);
    Console console(output.writer(), output.writer());
    std::string received;
    std::thread reader([&] {
        usleep(50'000);
        received = drain(output.reader());
    });
    const std::string text(std::size_t{1} << 20U, 'x');
    console.write(text);
    EXPECT_TRUE(console.flush());
    reader.join();
    EXPECT_EQ(received, text);
}

void ignoreAlarm(int /*signal*/) {}

TEST(Console, InterruptedWriteGoesOn) {
    const Pipe output;
    struct sigaction before {};
    struct sigaction interrupting {};
    interrupting.sa_handler = ignoreAlarm;
    ASSERT_EQ(sigaction(SIGUSR1, &interrupting, &before), 0);
    Console console(output.writer(), output.writer());
    std::string received;
    const pthread_t writer = pthread_self();
    std::thread reader([&] {
        for (int times = 0; times < 5; ++times) {
            usleep(10'000);
            pthread_kill(writer, SIGUSR1);
        }
        received = drain(output.reader());
    });
    const std::string text(std::size_t{1} << 20U, 'x');
    console.write(text);
    EXPECT_TRUE(console.flush());
    reader.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(received, text);
}

TEST(Console, FullDiskIsRememberedAndFurtherOutputDropped) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    Console console(full, full);
    console.write("lost");
    EXPECT_EQ(console.outputError(), 0);
    EXPECT_FALSE(console.flush());
    EXPECT_EQ(console.outputError(), ENOSPC);
    console.write("dropped");
    EXPECT_FALSE(console.flush());
    EXPECT_EQ(console.outputError(), ENOSPC);
    close(full);
}

TEST(Console, ErrorsOfStandardErrorDoNotCount) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const Pipe output;
    Console console(output.writer(), full);
    console.writeError("lost");
    EXPECT_TRUE(console.flush());
    EXPECT_EQ(console.outputError(), 0);
    close(full);
}

TEST(Console, ClosedPipeIsAnErrorWhereItsSignalIsIgnored) {
    struct sigaction before {};
    struct sigaction ignoring {};
    ignoring.sa_handler = SIG_IGN;
    ASSERT_EQ(sigaction(SIGPIPE, &ignoring, &before), 0);
    Pipe output;
    output.closeReader();
    Console console(output.writer(), output.writer());
    console.write("lost");
    EXPECT_FALSE(console.flush());
    EXPECT_EQ(console.outputError(), EPIPE);
    sigaction(SIGPIPE, &before, nullptr);
}

TEST(Console, NothingToWriteIsNoFailure) {
    Console console(-1, -1);
    EXPECT_TRUE(console.flush());
    console.write("lost");
    EXPECT_FALSE(console.flush());
    EXPECT_EQ(console.outputError(), EBADF);
}

/// Runs in a process of its own: what becomes of a file that is opened after the console was made
/// ready with standard streams closed.
[[noreturn]] void useClosedStreams(const std::string& path) {
    for (const int descriptor : {0, 1, 2}) {
        close(descriptor);
    }
    Console& console = Console::standard();
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    console.write("must not reach the file\n");
    console.writeError("must not reach the file\n");
    char letter = 0;
    const bool inputClosed = read(STDIN_FILENO, &letter, 1) == -1 && errno == EBADF;
    const bool right = file > STDERR_FILENO && !console.flush() && inputClosed &&
                       console.outputError() == EBADF && &console == &Console::standard();
    std::exit(right ? 0 : 1);
}

TEST(ConsoleDeathTest, ClosedStreamsAreTakenAndStayUnusable) {
    const support::TempDir folder;
    const std::string path = folder.write("file", "");
    EXPECT_EXIT(useClosedStreams(path), testing::ExitedWithCode(0), "");
    EXPECT_EQ(support::contentOf(path), "");
}

[[noreturn]] void useOpenStreams(int writer) {
    dup2(writer, STDOUT_FILENO);
    Console::standard().write("to standard output\n");
    std::exit(0);
}

TEST(ConsoleDeathTest, StandardConsoleWritesWhatIsLeftWhenTheProcessExits) {
    const Pipe output;
    EXPECT_EXIT(useOpenStreams(output.writer()), testing::ExitedWithCode(0), "");
    EXPECT_EQ(drain(output.reader()), "to standard output\n");
}

}  // namespace
