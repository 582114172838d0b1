#pragma once

#include "support/TempDir.h"

#include <string>
#include <vector>

namespace support {

/// The platform's debug log in a folder of its own, open while the object lives.
class LogReader {
public:
    LogReader();
    ~LogReader();
    LogReader(const LogReader&) = delete;
    LogReader& operator=(const LogReader&) = delete;

    /// The path of the one log file.
    std::string path() const;

    /// Everything logged so far.
    std::string text() const;

    /// Everything logged so far, without the newlines.
    std::vector<std::string> lines() const;

private:
    TempDir folder_;
};

}  // namespace support
