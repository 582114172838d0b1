#pragma once

#include <cstddef>
#include <cstdint>
#include <jansson.h>
#include <string>

/// The text of a string member of `object` for a narrow column: from 16 bytes on it is cut to its
/// first 15 (no UTF-8 character is split) and "~". Null if there is no text. Owned by `object`,
/// whose member is shortened too.
const char* getTrimmedString(const char* key, json_t* object);

/// Prints the line of the end of the reissue permission, empty for 0.
void printAllowAutoReissueDetails(std::int64_t milliseconds);

/// The same with a label that was fetched before.
void printReissueValidity(const std::string& label, std::int64_t milliseconds);

/// Prints `text` padded with spaces to `width` bytes (at most 40), as printf does; a null pointer
/// is "(null)".
void printPadded(const char* text, std::size_t width);

/// Prints the line "label : value" of the long listing, with the newline that begins it.
void printLongLine(const std::string& label, const char* value);
