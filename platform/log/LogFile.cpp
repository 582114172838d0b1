#include "log/LogFile.h"

#include <cerrno>
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

/// Opens a regular file with one link; never blocks (a FIFO without a reader fails with ENXIO).
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

/// Removes the last `size` bytes, the part of a line that was written before the disk was full,
/// unless another run's line follows. A line that arrives between the check and the cut is lost,
/// which is unlikely on a full disk.
void removePartialLine(int descriptor, off_t size) {
    struct stat facts {};
    const off_t end = lseek(descriptor, 0, SEEK_CUR);
    if (fstat(descriptor, &facts) == 0 && facts.st_size == end) {
        static_cast<void>(ftruncate(descriptor, end - size) == 0);
    }
}

/// A failed or short write is not continued: a second write could land inside another run's line.
void writeOnce(int descriptor, std::string_view line) {
    ssize_t count = 0;
    do {
        count = write(descriptor, line.data(), line.size());
    } while (count < 0 && errno == EINTR);
    if (count > 0 && static_cast<std::size_t>(count) < line.size()) {
        removePartialLine(descriptor, count);
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
