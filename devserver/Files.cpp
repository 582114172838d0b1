#include "devserver/Files.h"

#include "devserver/Failure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace devserver::files {

namespace {

[[noreturn]] void fail(const char* step, const std::filesystem::path& path) {
    throw Failure(
        std::string("cannot ") + step + ' ' + path.string() + ": " + std::strerror(errno));
}

void writeAll(int descriptor, const std::string& content, const std::filesystem::path& path) {
    std::size_t written = 0;
    while (written < content.size()) {
        const ssize_t count =
            ::write(descriptor, content.data() + written, content.size() - written);
        if (count < 0) {
            fail("write", path);
        }
        written += static_cast<std::size_t>(count);
    }
}

}  // namespace

std::string read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        fail("read", path);
    }
    return content;
}

void replace(const std::filesystem::path& path, const std::string& content) {
    std::string temporary = path.string() + ".XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) {
        fail("write", path);
    }
    try {
        writeAll(descriptor, content, path);
        if (::fsync(descriptor) != 0 || ::rename(temporary.c_str(), path.c_str()) != 0) {
            fail("write", path);
        }
    } catch (const Failure&) {
        ::close(descriptor);
        ::unlink(temporary.c_str());
        throw;
    }
    ::close(descriptor);
}

void makeFolder(const std::filesystem::path& path) {
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        fail("make the folder", path);
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        errno = ENOTDIR;
        fail("use", path);
    }
}

Lock::Lock(const std::filesystem::path& path)
    : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (descriptor_ < 0) {
        fail("write", path);
    }
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor_);
        throw Failure("another akdevserver is using " + path.parent_path().string());
    }
}

Lock::~Lock() {
    ::close(descriptor_);
}

}  // namespace devserver::files
