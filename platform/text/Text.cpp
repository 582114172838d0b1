#include "arkeon/text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace arkeon {
namespace {

/// `length`, or 0 if the text cannot be converted (EILSEQ). Every other failure of printf is
/// treated as out of memory.
std::size_t checkedLength(int length) {
    if (length < 0 && errno != EILSEQ) {
        throw std::bad_alloc();
    }
    return length < 0 ? 0 : static_cast<std::size_t>(length);
}

}  // namespace

std::size_t boundedCopy(char* buffer, std::size_t size, std::string_view text) {
    if (size == 0) {
        return 0;
    }
    const std::string_view fitting = cutText(text, size - 1);
    if (!fitting.empty()) {
        std::memmove(buffer, fitting.data(), fitting.size());
    }
    buffer[fitting.size()] = '\0';
    return fitting.size();
}

std::size_t boundedAppend(char* buffer, std::size_t size, std::string_view text) {
    if (size == 0) {
        return 0;
    }
    const std::size_t present = strnlen(buffer, size - 1);
    return present + boundedCopy(buffer + present, size - present, text);
}

std::size_t boundedFormat(char* buffer, std::size_t size, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::size_t length = boundedFormatV(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

std::size_t
boundedFormatV(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    if (size == 0) {
        return 0;
    }
    std::va_list again;
    va_copy(again, arguments);
    const int printed = std::vsnprintf(buffer, size, format, arguments);
    buffer[0] = printed < 0 ? '\0' : buffer[0];
    std::size_t length = checkedLength(printed);
    if (length >= size) {
        // The complete text, so that the cut does not split a UTF-8 character.
        std::string text(length, '\0');
        std::vsnprintf(text.data(), length + 1, format, again);
        length = boundedCopy(buffer, size, text);
    }
    va_end(again);
    return length;
}

bool localTime(std::time_t seconds, std::tm* result) {
    // localtime_r need not read TZ (POSIX); tzset does, once.
    [[maybe_unused]] static const bool zoneRead = (tzset(), true);
    if (localtime_r(&seconds, result) != nullptr) {
        return true;
    }
    *result = std::tm{};
    return false;
}

char* baseName(const char* path) {
    if (path == nullptr) {
        return nullptr;
    }
    const char* slash = std::strrchr(path, '/');
    return strdup(slash == nullptr ? path : slash + 1);
}

}  // namespace arkeon
