#pragma once

#include <array>
#include <cstddef>
#include <string>

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

/// Writes the catalogue's "Yes" into `buffer` if `text` is exactly "Yes", else its "No".
void GetLocalizedBoolString(const char* text, char* buffer, int size);

/// The label, cut to 39 bytes, that of the trust version to 63.
std::string labelText(HeaderType type);

/// The labels of one listing in the catalogue's language, fetched once for all its rows.
class ListLabels {
public:
    ListLabels();

    const std::string& operator[](HeaderType type) const {
        return labels_[static_cast<std::size_t>(type)];
    }

    /// The catalogue's "Yes" if `text` is exactly "Yes", else its "No".
    const char* boolean(const char* text) const;

private:
    std::array<std::string, static_cast<std::size_t>(HeaderType::trustVersion) + 1> labels_;
};
