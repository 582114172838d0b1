#include "arkeon/text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace arkeon {
namespace {

/// Formats once more with room for the letter that the end of the buffer would split: only then can
/// a letter that is cut be told from bytes that are none.
std::size_t formatCut(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
    constexpr std::size_t longestLetter = 4;
    std::string text(size + longestLetter, '\0');
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    const std::size_t complete = length < 0 ? 0 : static_cast<std::size_t>(length);
    text.resize(complete < text.size() ? complete : text.size() - 1);
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
    const int needed = std::vsnprintf(buffer, size, format, arguments);
    std::size_t length = 0;
    if (needed < 0) {
        buffer[0] = '\0';
    } else if (static_cast<std::size_t>(needed) < size) {
        length = static_cast<std::size_t>(needed);
    } else {
        length = formatCut(buffer, size, format, again);
    }
    va_end(again);
    return length;
}

char* baseName(const char* path) {
    if (path == nullptr) {
        return nullptr;
    }
    const char* slash = std::strrchr(path, '/');
    return strdup(slash == nullptr ? path : slash + 1);
}

}  // namespace arkeon
