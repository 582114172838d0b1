#include "arkeon/console.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace arkeon {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;

/// Waits until a descriptor that somebody else has made non-blocking takes bytes again.
bool waitUntilWritable(int descriptor) {
    pollfd waiting{descriptor, POLLOUT, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

/// Whether the write that has just failed may be tried again.
bool mayTryAgain(int descriptor) {
    return errno == EINTR || (errno == EAGAIN && waitUntilWritable(descriptor));
}

/// Writes all of `text`.
/// @return 0 or the errno value of the write that failed
int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (!mayTryAgain(descriptor)) {
            return errno;
        }
    }
    return 0;
}

bool isClosed(int descriptor) {
    return fcntl(descriptor, F_GETFD) == -1 && errno == EBADF;
}

/// open(2) takes the lowest free descriptor, which is the closed one when those below are open. The
/// access mode is the one that the stream is not used with, so that its use fails with EBADF.
void takeClosedStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (isClosed(descriptor)) {
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

}  // namespace

Console& Console::standard() {
    static const bool taken = (takeClosedStreams(), true);
    static_cast<void>(taken);
    static Console console(STDOUT_FILENO, STDERR_FILENO);
    return console;
}

Console::Console(int output, int error)
    : output_(output), error_(error), outputIsTerminal_(isatty(output) == 1),
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

/// A large text, such as a whole reply, goes out without a copy.
void Console::writeThrough(std::string_view text) {
    if (flush()) {
        outputError_ = writeAll(output_, text);
    }
}

void Console::writeError(std::string_view text) {
    flush();
    writeAll(error_, errorIsTerminal_ ? visibleText(text) : std::string(text));
}

bool Console::flush() {
    if (outputError_ == 0) {
        outputError_ = writeAll(output_, buffer_);
    }
    buffer_.clear();
    return outputError_ == 0;
}

}  // namespace arkeon
