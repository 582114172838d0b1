#pragma once

#include "cmdframework/Messages.h"

#include <array>
#include <cstdint>

/// What can be wrong with a command line.
enum usageExceptions : std::uint32_t {
    invalidOption = 0,
    commandOptionMissing = 1,
    optionCharacterMissing = 2,
    requiredOptionMissing = 3,
    commandOptionHasValue = 4,
    helpRequested = 5,
    optionRepeated = 6,
    notAnUnsignedInteger = 7,
    valueMissing = 8,
    valueNotUsed = 9,
    invalidValue = 10,
    nameAndAliasGiven = 11,
    unknownUsageError = 12,  ///< the fallback for every code without a text
    selectExactlyOne = 13,
    eitherIsRequired = 14,
    hasSlashes = 15,
    valueTooLong = 16,
};

/// A wrong command line. Thrown where the mistake is found, by the framework and by the operations'
/// rules; caught only by the driver, which shows the text and the usage and exits with 144.
///
/// The text, in the catalogue's language, is held in 1024 bytes; what does not fit is cut.
class CUsagecmd {
public:
    /// The code's message.
    explicit CUsagecmd(usageExceptions code);

    /// The message, a newline, the detail.
    CUsagecmd(usageExceptions code, const char* detail);

    /// The message, a newline, and the strings of the null-terminated `list` joined with ", ".
    CUsagecmd(usageExceptions code, const char** list);

    /// The message, a newline, the detail, and a line with the largest value: `limit` - 1, since
    /// `limit` is exclusive (the size of a buffer, its terminator included).
    CUsagecmd(usageExceptions code, const char* detail, unsigned long limit);

    CUsagecmd(const CUsagecmd&) = default;
    CUsagecmd& operator=(const CUsagecmd&) = default;
    virtual ~CUsagecmd() = default;

    virtual const char* what() const { return text_.data(); }

    /// Replaces the complete text.
    void SetUsagemessage(const char* text);

    /// Writes the code's message into `buf`.
    void message(char* buf, unsigned long size, usageExceptions code) const;

    /// Writes the code's message, a newline and the detail into `buf`.
    void message(char* buf, unsigned long size, usageExceptions code, const char* detail) const;

private:
    std::array<char, failureTextSize> text_{};
};
