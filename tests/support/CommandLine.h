#pragma once

#include "cmdframework/Argscmd.h"

#include <string>
#include <vector>

/// A command line that may be changed in place, as the argument vector does.
class CommandLine {
public:
    explicit CommandLine(std::vector<std::string> words) : words_(std::move(words)) {
        for (std::string& word : words_) {
            pointers_.push_back(word.data());
        }
        pointers_.push_back(nullptr);
    }

    int argc() const { return static_cast<int>(words_.size()); }
    char** argv() { return pointers_.data(); }

private:
    std::vector<std::string> words_;
    std::vector<char*> pointers_;
};

/// The options of a command line whose program is "akhostmgmt".
inline CArgscmd parsed(std::vector<std::string> options) {
    options.insert(options.begin(), "akhostmgmt");
    CommandLine line(std::move(options));
    return CArgscmd(line.argc(), line.argv());
}
