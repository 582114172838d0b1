#include "arkeon/catalogue.h"
#include "arkeon/status.h"
#include "arkeon/status_table.h"
#include "catalogue/Translate.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>
#include <stdexcept>
#include <string_view>

namespace arkeon {
namespace {

constexpr std::string_view contextPrefix = "Status";

/// The number at the end of "Status7610".
constexpr int codeOf(std::string_view context) {
    int code = 0;
    for (const char digit : context.substr(contextPrefix.size())) {
        code = code * 10 + (digit - '0');
    }
    return code;
}

/// One row. xgettext extracts it with `--keyword=statusText:2c,3`; a context that is not the code's
/// does not compile.
consteval StatusText
statusText(Status code, const char* context, const char* message, Retry retry) {
    if (!std::string_view(context).starts_with(contextPrefix) || codeOf(context) != code) {
        throw std::logic_error("the context must be \"Status\" and the code");
    }
    return {code, context, message, retry};
}

constexpr std::array statusTexts{
    statusText(status::success, "Status0", "The operation was successful.", Retry::no),
    statusText(
        status::generalFailure, "Status20", "The operation failed; the debug log tells the reason.",
        Retry::check),
    statusText(
        status::noPrimaryServer, "Status37",
        "No primary server is known; name it with -server or in the master configuration, "
        "etc/master.toml.",
        Retry::no),
    statusText(
        status::fileNotFound, "Status104",
        "The file does not exist; check the path that was given.", Retry::no),
    statusText(
        status::unusableLogin, "Status117",
        "The stored login cannot be used: its file is damaged or others than its owner can access "
        "it; log in again.",
        Retry::no),
    statusText(
        status::loginExpired, "Status118", "The login has expired; log in again.", Retry::no),
    statusText(
        status::wrongCommandLine, "Status144",
        "The command line is wrong; run the command with -help to see its options.", Retry::no),
    statusText(
        status::notLoggedIn, "Status5930",
        "You are not logged in to the primary server; log in and run the command again.",
        Retry::no),
    statusText(
        status::unreadableReply, "Status7610",
        "The server's reply could not be understood; check that the server is a primary server of "
        "a supported version.",
        Retry::check),
    statusText(
        status::unresolvedServer, "Status7620",
        "The server's name could not be resolved; check the name and the name service.",
        Retry::yes),
    statusText(
        status::noConnection, "Status7621",
        "No connection to the server could be made; check that it is running and that no firewall "
        "is in the way.",
        Retry::yes),
    statusText(
        status::timedOut, "Status7622",
        "The server did not answer in time; check the network and the server, then try again.",
        Retry::check),
    statusText(
        status::untrustedServer, "Status7623",
        "The server's certificate is not trusted, is not valid at this time or names another host; "
        "check the clock, the server name and the authorities for this server.",
        Retry::no),
    statusText(
        status::handshakeFailed, "Status7624",
        "The TLS handshake with the server failed; check that the server supports TLS 1.2 or newer "
        "and accepts this host's certificate.",
        Retry::no),
    statusText(
        status::connectionBroke, "Status7625",
        "The connection to the server broke before the reply was complete; check whether the "
        "change was made before trying again.",
        Retry::check),
    statusText(
        status::invalidServerName, "Status7626",
        "The server name is not valid; give a host name or an IP address without a port.",
        Retry::no),
    statusText(
        status::invalidRequestTarget, "Status7627",
        "The request target is not valid; check that no name or host ID has spaces or control "
        "characters or is one or two dots.",
        Retry::no),
    statusText(
        status::replyTooLarge, "Status7628", "The server's reply is too large.", Retry::check),
    statusText(
        status::clientFailure, "Status7629",
        "The HTTPS client failed; the debug log tells the reason.", Retry::check),
    statusText(
        status::noCertificateEntry, "Status7640",
        "There is no certificate information for this server in etc/certificates.toml; check "
        "its name, or enrol this host with it first.",
        Retry::no),
    statusText(
        status::malformedCertificateInfo, "Status7641",
        "The certificate information, etc/certificates.toml, cannot be read or is malformed; "
        "the debug log tells where.",
        Retry::no),
    statusText(
        status::unusableCertificate, "Status7642",
        "The certificate, the private key or the authorities that etc/certificates.toml names "
        "for this server cannot be read or used; the debug log tells which file.",
        Retry::no),
    statusText(
        status::openPrivateKey, "Status7643",
        "The private key's permissions are too open; only its owner may write it and only its "
        "group may read it (the debug log names the file).",
        Retry::no),
    statusText(
        status::hostIdBufferTooSmall, "Status7644",
        "The host ID in the certificate information is too long.", Retry::no),
    statusText(
        status::unreadableMasterConfig, "Status7650",
        "The master configuration cannot be read; the debug log tells the reason.", Retry::no),
    statusText(
        status::outputFailed, "Status7651",
        "The output could not be written; check the disk space and where the output goes.",
        Retry::check),
    statusText(
        status::emptyUri, "Status8614", "The operation has no request address at the server.",
        Retry::no),
    statusText(
        status::unknownName, "Status8701",
        "The server does not know this name; check its spelling.", Retry::no),
    statusText(
        status::nameTaken, "Status8702",
        "The name is approved for another host already; delete it there first, or share it between "
        "both hosts.",
        Retry::no),
    statusText(
        status::hostExists, "Status8703",
        "The server already has a host of this name; list it to see its host ID.", Retry::no),
    statusText(
        status::malformedBody, "Status8705",
        "The server did not understand the request; check that it is a primary server of a "
        "supported version.",
        Retry::no),
    statusText(
        status::invalidText, "Status8706",
        "The server does not accept a name, the comment or the reason; check that none is empty, "
        "too long or not UTF-8.",
        Retry::no),
    statusText(
        status::bodyTooLarge, "Status8707",
        "The request is too large for the server; shorten the values given.", Retry::no),
    statusText(
        status::wrongMethod, "Status8708",
        "The server does not support this operation; check that it is a primary server of a "
        "supported version.",
        Retry::no),
    statusText(
        status::wrongMediaType, "Status8709",
        "The server does not support this version of the interface; check that it is a primary "
        "server of a supported version.",
        Retry::no),
    statusText(
        status::unknownResource, "Status8710",
        "The server has no such resource; check the host ID.", Retry::no),
    statusText(
        status::malformedRequest, "Status8711",
        "The server cannot read the request target; check the names and the host ID.", Retry::no),
    statusText(
        status::otherHost, "Status8712",
        "The certificate of this host belongs to another host; enrol this host again.", Retry::no),
    statusText(
        status::serverFailure, "Status8713",
        "The server could not use its host database; check whether the change was made before "
        "trying again.",
        Retry::check),
    statusText(
        status::ambiguousHost, "Status8900",
        "The host name belongs to more than one host; give the host ID instead.", Retry::no),
    statusText(
        status::unknownMapping, "Status8901",
        "The host has no such mapped name; list its names to see which it has.", Retry::no),
    statusText(
        status::noMappings, "Status8902", "The host has no mapped names to show.", Retry::no),
};

static_assert(
    std::ranges::adjacent_find(statusTexts, std::ranges::greater_equal(), &StatusText::code) ==
        statusTexts.end(),
    "the codes ascend, each once");

const char* translated(const zvlocale& locale, const char* context, const char* message) {
    const char* text = translate(locale, context, message);
    return text == nullptr ? message : text;
}

const char* unknownStatus(int status, const zvlocale& locale) {
    static std::array<char, 512> buffer;
    zvgetmsg(
        "StatusUnknown", locale, buffer.data(), buffer.size(),
        "The operation failed with status %d; the debug log has the server's message, and the "
        "server's documentation may explain this code.",
        status);
    return buffer.data();
}

}  // namespace

std::span<const StatusText> statusTable() {
    return statusTexts;
}

}  // namespace arkeon

const char* getECmsgl(int status, const zvlocale& locale) {
    const auto* row = std::find_if(
        arkeon::statusTexts.begin(), arkeon::statusTexts.end(),
        [status](const arkeon::StatusText& text) { return text.code == status; });
    return row == arkeon::statusTexts.end()
               ? arkeon::unknownStatus(status, locale)
               : arkeon::translated(locale, row->context, row->message);
}
