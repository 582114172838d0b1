#pragma once

#include <cstdint>
#include <string>

/// A user-visible text: its identifier in the message catalogue and its English default, which may
/// hold printf-style placeholders.
struct CatalogueText {
    const char* id;
    const char* text;
};

/// Marks a catalogued text in the code; xgettext finds the texts by this name.
consteval CatalogueText catalogued(const char* id, const char* text) {
    return {id, text};
}

/// A message by the code of a failure.
struct MessageRow {
    std::uint32_t code;
    CatalogueText message;
};

/// Walks a table from the top to the row of `code` or of `fallback`, whichever comes first; the
/// table has to have the fallback's row.
const CatalogueText& messageOf(const MessageRow* table, std::uint32_t code, std::uint32_t fallback);

/// Fetches the text of message `id` into `buf` (cut to `size`), formatted with up to three strings;
/// those that the text does not use are null.
void getMessage(
    char* buf, unsigned long size, const char* id, const char* defaultText,
    const char* a1 = nullptr, const char* a2 = nullptr, const char* a3 = nullptr);

/// The same with one number.
void getMessage(char* buf, unsigned long size, const char* id, const char* defaultText, int n);

/// The catalogue's text for a status code; valid until the next call.
const char* getECMessage(int status);

/// The line in which a status and its text are shown: "Exit Status N: text", with its newline.
std::string statusLine(int status, const std::string& text);

/// Room for the text of a failure, its terminator included.
inline constexpr unsigned long failureTextSize = 1024;

/// Room for the text of an operation, its terminator included.
inline constexpr unsigned long operationTextSize = 8192;

/// The text of a message of the operations, cut to `operationTextSize`.
std::string
messageText(const CatalogueText& message, const char* a1 = nullptr, const char* a2 = nullptr);

/// Texts that more than one layer shows.
namespace messages {

inline constexpr CatalogueText selectExactlyOne =
    catalogued("SmeEmm0050N", "Please select exactly one of these options:");
inline constexpr CatalogueText eitherIsRequired =
    catalogued("SmeHmm0001N", "Either %s or %s is required and was not specified");
inline constexpr CatalogueText mappingNameHasSlashes =
    catalogued("SmeHmm0016N", "Mapping name must not contain slashes ('/' or '\\')");
inline constexpr CatalogueText valueIsTooLong =
    catalogued("SmeEmm0155N", "The value for the following parameter is too long.");
inline constexpr CatalogueText usageHeading = catalogued("SmeDev1010N", "\nUSAGE:\n");

}  // namespace messages
