#pragma once

#include "cmdframework/Messages.h"

#include <array>
#include <cstdint>

/// What can go wrong while a command runs. Code 1 has no text of its own.
enum runTimeExceptions : std::uint32_t {
    logNotOpened = 0,
    returnStatusNotZero = 1,
    commandNameIsNull = 2,
    parametersAreNull = 3,
    fileNotOpened = 4,
    passphraseNotFetched = 5,
    unknownRunTimeError = 6,  ///< the fallback for every code without a text
};

/// A failure while running. Thrown by the framework; caught only by the driver, which shows the
/// text and exits with `errcode()`.
///
/// The text, in the catalogue's language, is held in 1024 bytes; what does not fit is cut.
class CRuntimecmd {
public:
    /// The code's message; status 20.
    explicit CRuntimecmd(runTimeExceptions code);

    /// The message, the detail in double quotes and a newline; status 20.
    CRuntimecmd(runTimeExceptions code, const char* detail);

    /// The message and the status in parentheses; with `withStatusText` the status's own text
    /// is between them on a line of its own.
    CRuntimecmd(runTimeExceptions code, int status, bool withStatusText);

    /// The same with a detail in double quotes: behind the status when its text is shown, else in
    /// front of it.
    CRuntimecmd(runTimeExceptions code, const char* detail, int status, bool withStatusText);

    CRuntimecmd(const CRuntimecmd&) = default;
    CRuntimecmd& operator=(const CRuntimecmd&) = default;
    virtual ~CRuntimecmd() = default;

    virtual const char* what() const { return text_.data(); }

    /// The exit status.
    virtual int errcode() const { return status_; }

    /// The code's message. Each of the three returns a buffer of its own that is valid until its
    /// next call.
    const char* message(runTimeExceptions code) const;

    /// The message, the detail in double quotes and a newline.
    const char* message(runTimeExceptions code, const char* detail) const;

    /// The message, a newline, the status's text and the status in parentheses.
    const char* message(runTimeExceptions code, int status) const;

private:
    std::array<char, failureTextSize> text_{};
    std::int32_t status_;
};
