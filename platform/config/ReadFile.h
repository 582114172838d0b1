#pragma once

#include <cerrno>
#include <cstddef>
#include <string>
#include <sys/stat.h>

namespace arkeon {

/// No file that the platform reads is larger.
inline constexpr std::size_t maxFileSize = std::size_t{16} * 1024 * 1024;

/// A file as it was when it was opened. What counts is the opened file, not its name: the mode and
/// the owner come from the descriptor.
struct FileContent {
    int error = 0;       ///< 0, or the errno value of what went wrong
    std::string reason;  ///< message for `error`
    std::string text;    ///< the whole content when there is no error
    mode_t mode = 0;
    uid_t owner = 0;
};

/// Whether `error` means that the file does not exist.
inline bool isMissingFile(int error) {
    return error == ENOENT || error == ENOTDIR;
}

/// Reads a complete regular file of at most `limit` bytes. Any other file is rejected; opening it
/// never blocks.
FileContent readFile(const std::string& path, std::size_t limit = maxFileSize);

}  // namespace arkeon
