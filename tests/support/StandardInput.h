#pragma once

#include <string>

namespace support {

/// Takes the place of standard input as long as it lives.
class StandardInput {
public:
    explicit StandardInput(const std::string& content);
    ~StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

    /// What has not been read.
    static std::string rest();

private:
    int kept_;
};

}  // namespace support
