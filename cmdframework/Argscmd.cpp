#include "cmdframework/Argscmd.h"

#include "arkeon/status.h"
#include "arkeon/text.h"
#include "cmdframework/Runtimecmd.h"
#include "cmdframework/Usagecmd.h"

#include <cstdlib>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace {

std::string programNameOf(const char* path) {
    struct Release {
        void operator()(char* text) const { std::free(text); }
    };
    const std::unique_ptr<char, Release> name(arkeon::baseName(path));
    return name ? name.get() : path;
}

}  // namespace

CArgscmd::CArgscmd(int argc, char** argv) {
    if (argv == nullptr || argc < 1) {
        return;
    }
    programName = programNameOf(argv[0]);
    parse(argc, argv);
}

void CArgscmd::parse(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!isOptionArgument(argv[i])) {
            throw CUsagecmd(optionCharacterMissing, argv[i]);
        }
        const char* name = ++argv[i];
        const char* value = "";
        if (i + 1 < argc && !isOptionArgument(argv[i + 1])) {
            value = argv[++i];
        }
        if (!options_.emplace(name, value).second) {
            throw CUsagecmd(optionRepeated, name);
        }
    }
}

bool CArgscmd::isOptionArgument(const char* s) const {
    return s != nullptr && *s == '-';
}

bool CArgscmd::isCommand(const std::string& name) const {
    return options_.contains(name);
}

bool CArgscmd::exists(const char* name) const {
    return options_.contains(name);
}

bool CArgscmd::hasAValue(const char* name) const {
    return !argValue(name).empty();
}

std::string CArgscmd::argValue(const char* name) const {
    const auto option = options_.find(name);
    return option == options_.end() ? std::string() : option->second;
}

unsigned int CArgscmd::numericValue(const char* name) const {
    const std::string value = argValue(name);
    if (value.empty()) {
        throw CUsagecmd(valueMissing, name);
    }
    std::istringstream stream(value);
    unsigned int number = 0;
    char rest = 0;
    // The stream would accept a minus sign and negate the number.
    if (value.find('-') != std::string::npos || !(stream >> number) || stream >> rest) {
        throw CUsagecmd(notAnUnsignedInteger, name);
    }
    return number;
}

void CArgscmd::pathExists(const char* path) const {
    if (path != nullptr && access(path, F_OK) != 0) {
        throw CRuntimecmd(fileNotOpened, path, arkeon::status::fileNotFound, true);
    }
}

void CArgscmd::validate(parameterTypes type, const std::string& name) const {
    if (type == pathValue) {
        pathExists(argValue(name.c_str()).c_str());
    } else if (type == unsignedValue) {
        numericValue(name.c_str());
    }
}

std::string CArgscmd::commandLine() const {
    std::string line;
    for (const auto& [name, value] : options_) {
        line += " -" + name;
        if (!value.empty()) {
            line += " " + value;
        }
    }
    line += '\0';  // part of the text; the log shows it up to there
    return line;
}
