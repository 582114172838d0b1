#include "arkeon/debug_log.h"

#include "log/LogFile.h"
#include "log/LogLine.h"

#include <cerrno>
#include <new>
#include <unistd.h>

namespace arkeon {
namespace {

/// Never destroyed: objects that live until the process ends write and close the log last of all.
LogFile& debugLog() {
    static LogFile& file = *new LogFile;
    return file;
}

std::string_view textOrEmpty(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

std::string logPath(const char* root, const char* directory, const char* name) {
    return std::string(root) + '/' + directory + '/' + name + '.' + logDay(std::time(nullptr)) +
           ".log";
}

void appendLine(int level, std::initializer_list<std::string_view> parts, std::string_view name) {
    if (debugLog().known()) {
        LogStamp stamp{{}, getpid(), level, name};
        clock_gettime(CLOCK_REALTIME, &stamp.time);
        debugLog().append(logLine(stamp, parts));
    }
}

}  // namespace
}  // namespace arkeon

int open_debug_log(
    const char* root, const char* directory, const char* name, unsigned mode, int* status) {
    *status = arkeon::debugLog().open(arkeon::logPath(root, directory, name), mode);
    return *status == 0 ? 0 : -1;
}

void logmsg(int level, const char* text, const char* name) {
    logmsg(level, {arkeon::textOrEmpty(text)}, arkeon::textOrEmpty(name));
}

/// A log that cannot be written changes nothing for the caller, not even errno.
void logmsg(int level, std::initializer_list<std::string_view> parts, std::string_view name) {
    const int callersErrno = errno;
    try {
        arkeon::appendLine(level, parts, name);
    } catch (const std::bad_alloc&) {
        // Out of memory: the line is dropped.
    }
    errno = callersErrno;
}

void close_debug_log() {
    arkeon::debugLog().release();
}
