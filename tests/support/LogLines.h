#pragma once

#include "cmdframework/Logcmd.h"

#include <string>
#include <vector>

/// A command log whose lines are kept as "LEVEL text" (through its callback; the folder does not
/// exist, so no file is written).
class LogLines {
public:
    LogLines() {
        kept().clear();
        log.init("/dev/null", "akhostmgmt", "no-folder", keep);
    }

    static const std::vector<std::string>& lines() { return kept(); }

    CLogcmd log;

private:
    static std::vector<std::string>& kept() {
        static std::vector<std::string> all;
        return all;
    }

    static int keep(int level, const char* text, const char* /*name*/) {
        kept().push_back(std::to_string(level) + " " + text);
        return 0;
    }
};
