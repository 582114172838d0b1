#pragma once

#include "arkeon/debug_log.h"

#include <initializer_list>
#include <string>
#include <string_view>

class CRuntimecmd;

namespace logLevel = arkeon::logLevel;

/// The framework's front to the debug log. The driver's object opens the log; every other object
/// writes to the same one.
///
/// A count shared by all objects decides whether lines are written: `init` raises it, each
/// destructor lowers it, and the destructor that brings it to 0 closes the log. Copies and default
/// construction leave it alone, so it wraps below 0 once the objects of a command are destroyed:
/// lines are then written again, and the last lines of a run reach the log.
class CLogcmd {
public:
    /// Receives every line as well: level, text and program name.
    using Callback = int (*)(int level, const char* text, const char* name);

    CLogcmd() = default;
    CLogcmd(const CLogcmd&) = default;
    CLogcmd& operator=(const CLogcmd&) = default;
    virtual ~CLogcmd();

    /// Sets each setting that is still empty, opens the log if the use count is 0 and the
    /// directory exists, and raises the use count. A missing directory is not a failure; `program`
    /// is then ignored.
    /// @throws CRuntimecmd code 0 with the opener's status when the log cannot be opened
    void init(
        const char* newDirectory, const char* program, const char* newSubDirectory,
        Callback newCallback);

    /// Whether `directory`/`subDirectory` exists.
    bool logDirectoryExists() const;

    /// Writes one line under `name`, or under the program's name when `name` is null or empty.
    /// Nothing happens while the use count is 0. `text` is not null.
    void logit(const char* text, int level, const char* name = nullptr) const;
    void logit(const std::string& text, int level, const char* name = nullptr) const;

    /// The same for a text in parts, so that a large text is concatenated only for a callback.
    void logit(
        std::initializer_list<std::string_view> parts, int level, const char* name = nullptr) const;

    /// Writes "Run time failure: " and the failure's text as a failure.
    void logit(const CRuntimecmd& failure) const;

    /// The count of the class's comment.
    static unsigned int use_count;

private:
    std::string programName;
    std::string subDirectory;
    std::string directory;
    Callback callback = nullptr;
};
