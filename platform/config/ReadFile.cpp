#include "config/ReadFile.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace arkeon {
namespace {

/// A descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return number_; }

private:
    int number_;
};

FileContent failure(int error, std::string reason) {
    FileContent content;
    content.error = error;
    content.reason = std::move(reason);
    return content;
}

FileContent failure(int error) {
    return failure(error, std::generic_category().message(error));
}

ssize_t readSome(int descriptor, char* buffer, std::size_t size) {
    ssize_t count = 0;
    do {
        count = read(descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

/// Reads to the end, whatever size fstat reported: the file may grow meanwhile.
FileContent readAll(int descriptor, std::size_t limit) {
    constexpr std::size_t step = std::size_t{64} * 1024;
    FileContent content;
    std::string chunk(step, '\0');
    for (;;) {
        const ssize_t count = readSome(descriptor, chunk.data(), chunk.size());
        if (count < 0) {
            return failure(errno);
        }
        if (count == 0) {
            return content;
        }
        content.text.append(chunk, 0, static_cast<std::size_t>(count));
        if (content.text.size() > limit) {
            return failure(EFBIG, "larger than " + std::to_string(limit) + " bytes");
        }
    }
}

}  // namespace

FileContent readFile(const std::string& path, std::size_t limit) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.number() < 0) {
        return failure(errno);
    }
    struct stat facts {};
    if (fstat(file.number(), &facts) != 0) {
        return failure(errno);
    }
    if (!S_ISREG(facts.st_mode)) {
        return failure(EINVAL, "not a regular file");
    }
    FileContent content = readAll(file.number(), limit);
    content.mode = facts.st_mode;
    content.owner = facts.st_uid;
    return content;
}

}  // namespace arkeon
