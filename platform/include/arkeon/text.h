#pragma once

#include <cstdarg>
#include <cstddef>
#include <ctime>
#include <string_view>

/// Bounded text and reentrant time functions.
namespace arkeon {

/// Copies `text` into `buffer`, cut to `size` - 1 bytes without splitting a UTF-8 character;
/// always terminated when `size` > 0.
/// @return the length of the copy
std::size_t boundedCopy(char* buffer, std::size_t size, std::string_view text);

/// Appends `text` to the terminated text in `buffer`, cut as above.
/// @return the length of the text in `buffer`
std::size_t boundedAppend(char* buffer, std::size_t size, std::string_view text);

/// printf into a bounded buffer, cut as above.
/// @return the length of the text in `buffer`
/// @throws std::bad_alloc if printf runs out of memory
std::size_t boundedFormat(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// The same with an argument list; `arguments` is indeterminate afterwards, as after vprintf.
std::size_t
boundedFormatV(char* buffer, std::size_t size, const char* format, std::va_list arguments)
    __attribute__((format(printf, 3, 0)));

/// The longest beginning of `text` of at most `limit` bytes that ends between two UTF-8 characters;
/// bytes around the cut that are not valid UTF-8 are cut at `limit`.
std::string_view cutText(std::string_view text, std::size_t limit);

/// Whether `text` is well-formed UTF-8 (RFC 3629).
bool isUtf8(std::string_view text);

/// The last component of `path`, all of it when it has no "/"; to be released with free().
/// Null if `path` is null or out of memory.
char* baseName(const char* path);

/// Converts to local time (TZ, read once).
/// @return false when the year does not fit; `*result` is then zeroed
bool localTime(std::time_t seconds, std::tm* result);

}  // namespace arkeon
