#include "https/CurlStatus.h"

#include "arkeon/status.h"
#include "https/ReplyFraming.h"

namespace arkeon {
namespace {

int statusOf(CURLcode result) {
    switch (result) {
    case CURLE_OK:
        return status::success;
    case CURLE_COULDNT_RESOLVE_HOST:
        return status::unresolvedServer;
    case CURLE_COULDNT_CONNECT:
        return status::noConnection;
    case CURLE_OPERATION_TIMEDOUT:
        return status::timedOut;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
        return status::untrustedServer;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CLIENTCERT:
        return status::handshakeFailed;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
        return status::connectionBroke;
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CACERT_BADFILE:
        return status::unusableCertificate;
    default:
        return status::clientFailure;
    }
}

/// libcurl is content with a connection that is cut off inside the head, or anywhere in a body that
/// has no length.
bool isWhole(CURL* handle, const TransferNotes& notes) {
    return notes.replyHeadWhole && (notes.tlsClosed || !endsWithConnection(handle));
}

/// A TLS 1.3 server refuses the host's certificate after the handshake has ended for the client,
/// with an alert in place of a reply.
bool isRefusal(const TransferNotes& notes) {
    return notes.alertReceived && !notes.replyBegun;
}

/// libcurl takes a line of the head up to 100 KiB; of a longer one it says that it has no memory.
bool isHeadLineTooLong(CURLcode result, const TransferNotes& notes) {
    return result == CURLE_OUT_OF_MEMORY && notes.requestSent && !notes.replyHeadWhole;
}

}  // namespace

int transferStatus(CURL* handle, CURLcode result, const TransferNotes& notes) {
    if (notes.replyTooLarge) {
        return status::replyTooLarge;
    }
    if (notes.resendRefused) {
        return status::connectionBroke;
    }
    if (isHeadLineTooLong(result, notes)) {
        return status::replyTooLarge;
    }
    const int status = statusOf(result);
    if (status == status::success) {
        return isWhole(handle, notes) ? status::success : status::connectionBroke;
    }
    return isRefusal(notes) && status != status::untrustedServer ? status::handshakeFailed : status;
}

std::string_view observed(CURLcode result, const TransferNotes& notes) {
    if (notes.replyTooLarge) {
        return "the reply is over the limit";
    }
    if (isHeadLineTooLong(result, notes)) {
        return "a line of the reply's head is over the limit, or there is no memory for it";
    }
    if (notes.lengthUnclear) {
        return "the reply's Content-Length is not one number";
    }
    if (notes.outOfMemory) {
        return "no memory for the body";
    }
    if (notes.resendRefused) {
        return "the connection broke; the request is not sent again";
    }
    if (result == CURLE_OK) {
        return "the connection ended before the reply was whole";
    }
    return isRefusal(notes) ? "the server ended TLS with an alert" : "";
}

}  // namespace arkeon
