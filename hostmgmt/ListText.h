#pragma once

#include "hostmgmt/Json.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The labels of the listing.
enum class HeaderType {
    hostId = 0,
    mappedNames = 1,
    host = 2,
    masterServer = 3,
    osType = 4,
    operatingSystem = 5,
    eebs = 6,
    packages = 7,
    updatePlatform = 8,
    hardwareDescription = 9,
    cpuArchitecture = 10,
    version = 11,
    secure = 12,
    mappedHostName = 13,
    approved = 14,
    conflict = 15,
    autoDiscovered = 16,
    shared = 17,
    createdOn = 18,
    lastUpdatedOn = 19,
    yes = 20,
    no = 21,
    comment = 22,
    autoReissue = 23,
    autoReissueValidity = 24,
    externalSubject = 25,
    caIssued = 26,
    trustVersion = 27,
};

/// The words for true and false where they are not translated.
inline constexpr const char* yesText = "Yes";
inline constexpr const char* noText = "No";

/// Writes the catalogue's text of a label into `buffer`, cut to `size` - 1 bytes; any other number
/// leaves the buffer untouched.
void GetLocalizedString(HeaderType type, char* buffer, int size);

/// The label in the room that labels have: 40 bytes, for the trust version 64, with the terminator.
std::string labelText(HeaderType type);

/// Writes the catalogue's "Yes" into `buffer` when `text` is exactly "Yes", else its "No".
void GetLocalizedBoolString(const char* text, char* buffer, int size);

/// The text of a string member of `object` for a narrow column: from 16 bytes on it is cut to its
/// first 15 (no UTF-8 letter is split) and "~", also in `object`. Null when there is no text.
const char* getTrimmedString(const char* key, json_t* object);

/// Prints the line of the end of the reissue permission, empty for 0.
void printAllowAutoReissueDetails(std::int64_t milliseconds);

/// Prints `text` filled up with blanks to `width` bytes, as printf does; a null pointer is
/// "(null)".
void printPadded(const char* text, std::size_t width);

/// Prints the line "label : value" of the long listing, with the newline that begins it.
void printLongLine(const std::string& label, const char* value);
