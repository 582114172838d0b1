#include "support/StandardInput.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace support {

StandardInput::StandardInput(const std::string& content) : kept_(dup(STDIN_FILENO)) {
    const int file = memfd_create("standard-input", MFD_CLOEXEC);
    EXPECT_EQ(
        pwrite(file, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
    dup2(file, STDIN_FILENO);
    close(file);
}

StandardInput::~StandardInput() {
    dup2(kept_, STDIN_FILENO);
    close(kept_);
}

std::string StandardInput::rest() {
    std::string text;
    char byte = 0;
    while (read(STDIN_FILENO, &byte, 1) == 1) {
        text += byte;
    }
    return text;
}

}  // namespace support
