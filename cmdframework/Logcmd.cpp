#include "cmdframework/Logcmd.h"

#include "arkeon/text.h"
#include "cmdframework/Messages.h"
#include "cmdframework/Runtimecmd.h"

#include <array>
#include <unistd.h>

namespace {

constexpr unsigned logFileMode = 0666;

constexpr CatalogueText runTimeFailure = catalogued("SmeEmm0017N", "Run time failure: ");

void setIfEmpty(std::string& setting, const char* value) {
    if (setting.empty() && value != nullptr) {
        setting = value;
    }
}

}  // namespace

unsigned int CLogcmd::use_count = 0;

CLogcmd::~CLogcmd() {
    // No floor: the count wraps once a command's own logs are gone, and lines are written again.
    if (--use_count == 0) {
        close_debug_log();
    }
}

void CLogcmd::init(
    const char* newDirectory, const char* program, const char* newSubDirectory,
    Callback newCallback) {
    setIfEmpty(directory, newDirectory);
    setIfEmpty(subDirectory, newSubDirectory);
    if (newCallback != nullptr) {
        callback = newCallback;
    }
    if (use_count == 0 && logDirectoryExists()) {
        int status = 0;
        const char* name = subDirectory.c_str();
        if (open_debug_log(directory.c_str(), name, name, logFileMode, &status) < 0) {
            throw CRuntimecmd(logNotOpened, status, false);
        }
        setIfEmpty(programName, program);
    }
    ++use_count;
}

bool CLogcmd::logDirectoryExists() const {
    return access((directory + "/" + subDirectory).c_str(), F_OK) == 0;
}

void CLogcmd::logit(const char* text, int level, const char* name) const {
    logit({std::string_view(text)}, level, name);
}

void CLogcmd::logit(const std::string& text, int level, const char* name) const {
    logit({std::string_view(text)}, level, name);
}

void CLogcmd::logit(
    std::initializer_list<std::string_view> parts, int level, const char* name) const {
    if (use_count == 0) {
        return;
    }
    const bool named = name != nullptr && *name != '\0';
    const char* nameUsed = named ? name : programName.c_str();
    logmsg(level, parts, nameUsed);
    if (callback != nullptr) {
        std::string text;
        for (const std::string_view part : parts) {
            text += part;
        }
        callback(level, text.c_str(), nameUsed);
    }
}

void CLogcmd::logit(const CRuntimecmd& failure) const {
    std::array<char, failureTextSize> text{};
    getMessage(text.data(), text.size(), runTimeFailure.id, runTimeFailure.text);
    arkeon::boundedAppend(text.data(), text.size(), failure.what());
    logit(text.data(), logLevel::failure, nullptr);
}
