#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace support {

/// A fresh folder that is removed with everything in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// The path of `name` in the folder.
    std::string file(std::string_view name) const { return path_ / name; }

    /// Writes a file, with the folders above it, and gives it exactly this mode.
    std::string write(std::string_view name, std::string_view content, mode_t mode = 0600) const;

private:
    std::filesystem::path path_;
};

/// The whole content of a file; throws when it cannot be read.
std::string contentOf(const std::string& path);

}  // namespace support
