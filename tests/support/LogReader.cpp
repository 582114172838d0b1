#include "support/LogReader.h"

#include "arkeon/debug_log.h"

#include <gtest/gtest.h>
#include <sstream>

namespace support {

LogReader::LogReader() {
    int status = 0;
    std::filesystem::create_directory(folder_.path() / "admin");
    EXPECT_EQ(open_debug_log(folder_.path().c_str(), "admin", "admin", 0600, &status), 0);
    EXPECT_EQ(status, 0);
}

LogReader::~LogReader() {
    close_debug_log();
}

std::string LogReader::path() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path() / "admin")) {
        return entry.path();
    }
    ADD_FAILURE() << "no log file";
    return {};
}

std::string LogReader::text() const {
    return contentOf(path());
}

std::vector<std::string> LogReader::lines() const {
    std::istringstream stream(text());
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace support
