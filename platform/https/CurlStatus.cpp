#include "https/CurlStatus.h"

#include "https/ReplyFraming.h"

namespace arkeon {
namespace {

Status statusOf(CURLcode result) {
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

/// libcurl accepts a connection that breaks off inside the header section, or anywhere in a body
/// without a length.
bool isComplete(CURL* handle, const TransferNotes& notes) {
    return notes.headersComplete && (notes.tlsClosed || !endsWithConnection(handle));
}

/// A TLS 1.3 server rejects the host's certificate when the handshake has ended for the client: it
/// sends an alert instead of a reply.
bool isRejection(const TransferNotes& notes) {
    return notes.alertReceived && !notes.replyBegun;
}

/// libcurl reports a header line over 100 KiB as "out of memory".
bool isHeaderLineTooLong(CURLcode result, const TransferNotes& notes) {
    return result == CURLE_OUT_OF_MEMORY && notes.requestSent && !notes.headersComplete;
}

/// What the notes add to libcurl's own text; empty for nothing.
std::string_view observation(CURLcode result, const TransferNotes& notes) {
    if (notes.replyTooLarge) {
        return "the reply is over the limit";
    }
    if (isHeaderLineTooLong(result, notes)) {
        return "a line of the reply's head is over the limit, or there is no memory for it";
    }
    if (notes.lengthAmbiguous) {
        return "the reply's Content-Length is not one number";
    }
    if (notes.resendRejected) {
        return "the connection broke; the request is not sent again";
    }
    if (result == CURLE_OK) {
        return "the connection ended before the reply was whole";
    }
    return isRejection(notes) ? "the server ended TLS with an alert" : "";
}

}  // namespace

Status transferStatus(CURL* handle, CURLcode result, const TransferNotes& notes) {
    if (notes.replyTooLarge) {
        return status::replyTooLarge;
    }
    if (notes.resendRejected) {
        return status::connectionBroke;
    }
    if (isHeaderLineTooLong(result, notes)) {
        return status::replyTooLarge;
    }
    const Status status = statusOf(result);
    if (status == status::success) {
        return isComplete(handle, notes) ? status::success : status::connectionBroke;
    }
    return isRejection(notes) && status != status::untrustedServer ? status::handshakeFailed
                                                                   : status;
}

std::string
failureReason(CURLcode result, std::string_view libcurlText, const TransferNotes& notes) {
    std::string reason(libcurlText);
    if (reason.empty() && result != CURLE_OK) {
        reason = curl_easy_strerror(result);
    }
    const std::string_view addition = observation(result, notes);
    if (!reason.empty() && !addition.empty()) {
        reason += "; ";
    }
    return reason.append(addition);
}

}  // namespace arkeon
