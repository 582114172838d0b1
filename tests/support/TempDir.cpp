#include "support/TempDir.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/stat.h>

namespace support {

TempDir::TempDir() {
    std::string name = std::filesystem::temp_directory_path() / "akhostmgmt-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + name);
    }
    path_ = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::write(std::string_view name, std::string_view content, mode_t mode) const {
    const std::filesystem::path target = path_ / name;
    std::filesystem::create_directories(target.parent_path());
    std::ofstream stream(target, std::ios::binary | std::ios::trunc);
    stream << content;
    stream.close();
    if (!stream || chmod(target.c_str(), mode) != 0) {
        throw std::runtime_error("cannot write " + target.string());
    }
    return target;
}

std::string contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace support
