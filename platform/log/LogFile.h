#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace arkeon {

/// The descriptor of a log file that can be opened again under the same name. All log files of one
/// process go through one object; the program has one thread.
class LogFile {
public:
    LogFile() = default;
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Opens `path` in place of the file before; that one stays when this fails.
    /// @return 0 or an errno value
    int open(const std::string& path, mode_t mode);

    /// Appends `line` with a single write(2), reopening the file for it when it was released. Does
    /// nothing when no file was ever opened; failures are dropped, and with them the whole line.
    void append(std::string_view line);

    /// Closes the descriptor and keeps the path.
    void release();

    /// Whether a file was ever opened.
    bool known() const { return !path_.empty(); }

private:
    std::string path_;
    mode_t mode_ = 0;
    int descriptor_ = -1;
};

}  // namespace arkeon
