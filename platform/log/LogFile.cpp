#include "log/LogFile.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace arkeon {
namespace {

/// @return 0 or an errno value
int checkOpened(int descriptor) {
    struct stat facts {};
    if (fstat(descriptor, &facts) != 0) {
        return errno;
    }
    if (!S_ISREG(facts.st_mode)) {
        return EINVAL;
    }
    return facts.st_nlink > 1 ? EMLINK : 0;
}

/// Moves a descriptor out of the standard streams' numbers: one that took the place of a closed
/// standard output would make the log its target.
int aboveStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(descriptor);
    return moved;
}

/// Opens a regular file with one link; nothing here can wait (a FIFO without a reader gives ENXIO).
/// @return 0 or an errno value
int openChecked(const std::string& path, mode_t mode, int& descriptor) {
    constexpr int flags =
        O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    descriptor = aboveStandardStreams(open(path.c_str(), flags, mode));
    if (descriptor < 0) {
        return errno;
    }
    const int error = checkOpened(descriptor);
    if (error != 0) {
        close(descriptor);
        descriptor = -1;
    }
    return error;
}

/// While the object lives, a write beyond the process's file size limit (ulimit -f) fails like any
/// other write instead of ending the process.
class SizeSignalBlock {
public:
    SizeSignalBlock() {
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    }
    ~SizeSignalBlock() {
        const timespec noTime{};
        sigtimedwait(&signal_, nullptr, &noTime);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    SizeSignalBlock(const SizeSignalBlock&) = delete;
    SizeSignalBlock& operator=(const SizeSignalBlock&) = delete;

private:
    sigset_t signal_{};
    sigset_t before_{};
};

/// Takes back the piece of a line, `size` bytes, that went to a full disk, unless another run's
/// line follows it. A line that comes in between the look and the cut is lost; on a full disk there
/// is hardly one. What cannot be taken back stays.
void takeBack(int descriptor, off_t size) {
    struct stat facts {};
    const off_t end = lseek(descriptor, 0, SEEK_CUR);
    if (fstat(descriptor, &facts) == 0 && facts.st_size == end) {
        static_cast<void>(ftruncate(descriptor, end - size) == 0);
    }
}

/// A failed or short write is not gone on with: a second write could land inside another run's
/// line.
void writeOnce(int descriptor, std::string_view line) {
    const SizeSignalBlock block;
    ssize_t count = 0;
    do {
        count = write(descriptor, line.data(), line.size());
    } while (count < 0 && errno == EINTR);
    if (count > 0 && static_cast<std::size_t>(count) < line.size()) {
        takeBack(descriptor, count);
    }
}

}  // namespace

LogFile::~LogFile() {
    release();
}

int LogFile::open(const std::string& path, mode_t mode) {
    int opened = -1;
    const int error = openChecked(path, mode, opened);
    if (error != 0) {
        return error;
    }
    release();
    path_ = path;
    mode_ = mode;
    descriptor_ = opened;
    return 0;
}

void LogFile::append(std::string_view line) {
    if (descriptor_ >= 0) {
        writeOnce(descriptor_, line);
    } else if (known() && openChecked(path_, mode_, descriptor_) == 0) {
        writeOnce(descriptor_, line);
        release();
    }
}

void LogFile::release() {
    if (descriptor_ >= 0) {
        close(descriptor_);
        descriptor_ = -1;
    }
}

}  // namespace arkeon
