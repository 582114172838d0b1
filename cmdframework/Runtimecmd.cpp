#include "cmdframework/Runtimecmd.h"

#include "arkeon/status.h"
#include "arkeon/text.h"
#include "cmdframework/Messages.h"

using arkeon::boundedCopy;
using arkeon::boundedFormat;

namespace {

// Code 1 has no row on purpose: it shows the fallback's text.
constexpr MessageRow messageTable[] = {
    {logNotOpened,
     catalogued("SmeEmm0016N", "There was a problem opening the log file.  Command terminated.")},
    {commandNameIsNull, catalogued("SmeCmd0001N", "The top level command name is NULL.")},
    {parametersAreNull, catalogued("SmeCmd0002N", "The command parameters list is NULL.")},
    {fileNotOpened, catalogued("SmeHst0008N", "The file could not be opened.")},
    {passphraseNotFetched, catalogued("SmeHst0015N", "The passphrase could not be fetched.")},
    {unknownRunTimeError, catalogued("SmeEmm0014N", "Unknown run time error.")},
};

const CatalogueText& textOf(runTimeExceptions code) {
    return messageOf(messageTable, code, unknownRunTimeError);
}

}  // namespace

CRuntimecmd::CRuntimecmd(runTimeExceptions code) : status_(arkeon::status::generalFailure) {
    boundedCopy(text_.data(), text_.size(), message(code));
}

CRuntimecmd::CRuntimecmd(runTimeExceptions code, const char* detail)
    : status_(arkeon::status::generalFailure) {
    boundedCopy(text_.data(), text_.size(), message(code, detail));
}

CRuntimecmd::CRuntimecmd(runTimeExceptions code, int status, bool withStatusText)
    : status_(status) {
    if (withStatusText) {
        boundedCopy(text_.data(), text_.size(), message(code, status));
    } else {
        boundedFormat(text_.data(), text_.size(), "%s (%d)", message(code), status);
    }
}

CRuntimecmd::CRuntimecmd(
    runTimeExceptions code, const char* detail, int status, bool withStatusText)
    : status_(status) {
    if (withStatusText) {
        boundedFormat(text_.data(), text_.size(), "%s \"%s\"\n", message(code, status), detail);
    } else {
        boundedFormat(text_.data(), text_.size(), "%s (%d)", message(code, detail), status);
    }
}

const char* CRuntimecmd::message(runTimeExceptions code) const {
    static std::array<char, failureTextSize> buffer;
    const CatalogueText& text = textOf(code);
    getMessage(buffer.data(), buffer.size(), text.id, text.text);
    return buffer.data();
}

const char* CRuntimecmd::message(runTimeExceptions code, const char* detail) const {
    static std::array<char, failureTextSize> buffer;
    boundedFormat(buffer.data(), buffer.size(), "%s\"%s\"\n", message(code), detail);
    return buffer.data();
}

const char* CRuntimecmd::message(runTimeExceptions code, int status) const {
    static std::array<char, failureTextSize> buffer;
    boundedFormat(
        buffer.data(), buffer.size(), "%s\n%s (%d)", message(code), getECMessage(status), status);
    return buffer.data();
}
