#include "arkeon/console.h"

#include <array>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string_view>
#include <thread>
#include <unistd.h>

using arkeon::Console;

namespace {

class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC), 0); }
    ~Pipe() {
        close(ends_[0]);
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    int reader() const { return ends_[0]; }
    int writer() const { return ends_[1]; }
    void put(std::string_view text) const {
        EXPECT_EQ(write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void closeWriter() {
        if (ends_[1] >= 0) {
            close(ends_[1]);
        }
        ends_[1] = -1;
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

bool hasInput(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1 && (waiting.revents & POLLIN) != 0;
}

TEST(ConsoleInput, LinesComeWithoutTheirNewlineUpToTheEnd) {
    Pipe input;
    input.put("one\n\n two \r\nlast");
    input.closeWriter();
    Console console(-1, -1, input.reader());
    for (const char* expected : {"one", "", " two \r"}) {
        const Console::Line line = console.readLine();
        EXPECT_EQ(line.text, expected);
        EXPECT_FALSE(line.endsInput);
    }
    const Console::Line last = console.readLine();
    EXPECT_EQ(last.text, "last");
    EXPECT_TRUE(last.endsInput);
    const Console::Line none = console.readLine();
    EXPECT_EQ(none.text, "");
    EXPECT_TRUE(none.endsInput);
}

TEST(ConsoleInput, NoByteAfterTheLineIsTaken) {
    const Pipe input;
    input.put("mine\nyours\n");
    Console console(-1, -1, input.reader());
    EXPECT_EQ(console.readLine().text, "mine");
    std::array<char, 16> rest{};
    EXPECT_EQ(read(input.reader(), rest.data(), rest.size()), 6);
    EXPECT_EQ(std::string_view(rest.data()), "yours\n");
}

TEST(ConsoleInput, OutputIsWrittenBeforeTheRead) {
    const Pipe input;
    const Pipe output;
    Console console(output.writer(), -1, input.reader());
    console.write("Really? ");
    EXPECT_FALSE(hasInput(output.reader()));
    std::thread user([&] {
        pollfd waiting{output.reader(), POLLIN, 0};
        EXPECT_EQ(poll(&waiting, 1, 20'000), 1) << "no question while the answer is awaited";
        input.put("y\n");
    });
    EXPECT_EQ(console.readLine().text, "y");
    user.join();
}

TEST(ConsoleInput, InputThatMustNotBlockIsWaitedFor) {
    const Pipe input;
    ASSERT_EQ(fcntl(input.reader(), F_SETFL, O_NONBLOCK), 0);
    Console console(-1, -1, input.reader());
    std::thread user([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        input.put("y\n");
    });
    EXPECT_EQ(console.readLine().text, "y");
    user.join();
}

TEST(ConsoleInput, WhatCannotBeReadHasEnded) {
    const int folder = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (const int descriptor : {-1, folder}) {
        Console console(-1, -1, descriptor);
        EXPECT_TRUE(console.readLine().endsInput);
    }
    close(folder);
}

TEST(ConsoleInput, OnlyTheBeginningOfAVeryLongLineIsKept) {
    Pipe input;
    std::thread user([&] {
        input.put(std::string(200'000, 'x') + "\nnext\n");
        input.closeWriter();
    });
    Console console(-1, -1, input.reader());
    EXPECT_EQ(console.readLine().text, std::string(Console::maxLineLength, 'x'));
    EXPECT_EQ(console.readLine().text, "next");
    user.join();
}

}  // namespace
