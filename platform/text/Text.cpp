#include "arkeon/text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace arkeon {
namespace {

/// The length that printf returned; 0 for a text that cannot be formatted. Its other failures mean
/// out of memory, when an empty text must not pass for the right one.
std::size_t checkedLength(int length) {
    if (length < 0 && errno != EILSEQ) {
        throw std::bad_alloc();
    }
    return length < 0 ? 0 : static_cast<std::size_t>(length);
}

/// Formats once more with room for the character that the end of the buffer would split, since only
/// then a split character differs from bytes that are not UTF-8.
std::size_t formatCut(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    constexpr std::size_t restOfCharacter = 3;  // of the 4 bytes that it has at most
    std::string text(size + restOfCharacter, '\0');
    checkedLength(std::vsnprintf(text.data(), text.size(), format, arguments));
    return boundedCopy(buffer, size, text);
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
    // An exception leaves va_end out, which does nothing where this runs.
    const int printed = std::vsnprintf(buffer, size, format, arguments);
    buffer[0] = printed < 0 ? '\0' : buffer[0];
    std::size_t length = checkedLength(printed);
    if (length >= size) {
        length = formatCut(buffer, size, format, again);
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
