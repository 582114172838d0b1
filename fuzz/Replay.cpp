// Runs a target over every file of its corpus, each in a process of its own, and ends with a line
// of counts: what the fuzzer found once stays found where there is no fuzzer. A folder without
// files fails.

#include "support/TempDir.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::string> filesOf(const char* folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// Whether the target takes the file. The child's folders are in the parent's, which is removed
/// however the child ends.
bool passes(const std::string& file) {
    const std::string content = support::contentOf(file);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        LLVMFuzzerTestOneInput(
            reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
        _exit(0);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", argv[0]);
        return 2;
    }
    const support::TempDir folder;
    setenv("TMPDIR", folder.path().c_str(), 1);
    std::size_t passed = 0;
    const std::vector<std::string> files = filesOf(argv[1]);
    for (const std::string& file : files) {
        const bool ok = passes(file);
        passed += ok ? 1 : 0;
        if (!ok) {
            std::printf("failed: %s\n", file.c_str());
        }
    }
    std::printf("%zu passed, %zu failed\n", passed, files.size() - passed);
    return !files.empty() && passed == files.size() ? 0 : 1;
}
