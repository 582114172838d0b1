#pragma once

#include <filesystem>
#include <string>

/// Files as the server keeps them: readable by their owner alone, never half written. Failures
/// are Failure.
namespace devserver::files {

std::string read(const std::filesystem::path& path);

/// Replaces the file in one step; it gets mode 0600.
void replace(const std::filesystem::path& path, const std::string& content);

/// Makes a folder of mode 0700 unless it is there.
void makeFolder(const std::filesystem::path& path);

/// An exclusive lock on a file, which is made when it is absent; ends with the object.
class Lock {
public:
    explicit Lock(const std::filesystem::path& path);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    int descriptor_;
};

}  // namespace devserver::files
