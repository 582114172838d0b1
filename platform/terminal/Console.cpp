#include "arkeon/console.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace arkeon {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;

/// Waits until a descriptor that another process made non-blocking is ready.
bool waitUntilReady(int descriptor, short event) {
    pollfd waiting{descriptor, event, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

/// Whether the read or write that has just failed may be tried again.
bool mayTryAgain(int descriptor, short event) {
    return errno == EINTR || (errno == EAGAIN && waitUntilReady(descriptor, event));
}

/// Writes all of `text`.
/// @return 0 or the errno value of the write that failed
int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (!mayTryAgain(descriptor, POLLOUT)) {
            return errno;
        }
    }
    return 0;
}

/// Reads one byte.
/// @return false at end of input or if the read failed
bool readByte(int descriptor, char& byte) {
    ssize_t count = ::read(descriptor, &byte, 1);
    while (count < 0 && mayTryAgain(descriptor, POLLIN)) {
        count = ::read(descriptor, &byte, 1);
    }
    return count == 1;
}

bool isClosed(int descriptor) {
    return fcntl(descriptor, F_GETFD) == -1 && errno == EBADF;
}

/// open(2) takes the lowest free descriptor, which is the closed one when those below are open. The
/// access mode is the one that the stream is not used with, so that its use fails with EBADF.
void occupyClosedStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (isClosed(descriptor)) {
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

}  // namespace

Console& Console::standard() {
    static const bool occupied = (occupyClosedStreams(), true);
    static_cast<void>(occupied);
    static Console console(STDOUT_FILENO, STDERR_FILENO, STDIN_FILENO);
    return console;
}

Console::Console(int output, int error, int input)
    : output_(output), error_(error), input_(input), outputIsTerminal_(isatty(output) == 1),
      errorIsTerminal_(isatty(error) == 1) {}

Console::~Console() {
    flush();
}

void Console::write(std::string_view text) {
    if (outputError_ != 0) {
        return;
    }
    if (!outputIsTerminal_ && text.size() >= bufferSize) {
        writeThrough(text);
        return;
    }
    if (outputIsTerminal_) {
        buffer_ += visibleText(text);
    } else {
        buffer_ += text;
    }
    if (buffer_.size() >= bufferSize) {
        flush();
    }
}

/// Writes a large text without copying it.
void Console::writeThrough(std::string_view text) {
    if (flush()) {
        outputError_ = writeAll(output_, text);
    }
}

void Console::writeError(std::string_view text) {
    flush();
    if (errorIsTerminal_) {
        writeAll(error_, visibleText(text));
    } else {
        writeAll(error_, text);
    }
}

Console::Line Console::readLine() {
    flush();
    Line line;
    char byte = 0;
    while (readByte(input_, byte)) {
        if (byte == '\n') {
            return line;
        }
        if (line.text.size() < maxLineLength) {
            line.text += byte;
        }
    }
    line.endsInput = true;
    return line;
}

bool Console::flush() {
    if (outputError_ == 0) {
        outputError_ = writeAll(output_, buffer_);
    }
    buffer_.clear();
    return outputError_ == 0;
}

}  // namespace arkeon
