#include "https/CurlStatus.h"

#include "arkeon/status.h"

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
    case CURLE_URL_MALFORMAT:
        return status::invalidServerName;
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CACERT_BADFILE:
        return status::unusableCertificate;
    default:
        return status::clientFailure;
    }
}

}  // namespace

int transferStatus(CURLcode result, const TransferNotes& notes) {
    if (notes.bodyTooLarge) {
        return status::replyTooLarge;
    }
    if (notes.resendRefused) {
        return status::connectionBroke;
    }
    const int status = statusOf(result);
    if (status == status::success && !notes.replyHeadWhole) {
        return status::connectionBroke;
    }
    // A TLS 1.3 server refuses the host's certificate after the handshake has ended for the client,
    // with an alert where the reply would be.
    const bool refused = notes.alertReceived && !notes.replyBegun;
    return refused && status != status::success && status != status::untrustedServer
               ? status::handshakeFailed
               : status;
}

}  // namespace arkeon
