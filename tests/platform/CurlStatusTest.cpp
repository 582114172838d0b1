// What the end of a transfer is called, for ends that a server brings about only by chance.

#include "https/CurlStatus.h"

#include "arkeon/status.h"

#include <gtest/gtest.h>

namespace {

using arkeon::failureReason;
using arkeon::TransferNotes;
using arkeon::transferStatus;
namespace status = arkeon::status;

int statusOf(CURLcode result, const TransferNotes& notes = {}) {
    return transferStatus(nullptr, result, notes);
}

TransferNotes alert(bool afterTheReplyBegan) {
    TransferNotes notes;
    notes.alertReceived = true;
    notes.replyBegun = afterTheReplyBegan;
    return notes;
}

TEST(CurlStatus, EveryResultOfLibcurlHasItsStatus) {
    const std::pair<CURLcode, int> rows[] = {
        {CURLE_COULDNT_RESOLVE_HOST, status::unresolvedServer},
        {CURLE_COULDNT_CONNECT, status::noConnection},
        {CURLE_OPERATION_TIMEDOUT, status::timedOut},
        {CURLE_PEER_FAILED_VERIFICATION, status::untrustedServer},
        {CURLE_SSL_ISSUER_ERROR, status::untrustedServer},
        {CURLE_SSL_CONNECT_ERROR, status::handshakeFailed},
        {CURLE_SSL_CIPHER, status::handshakeFailed},
        {CURLE_SSL_CLIENTCERT, status::handshakeFailed},
        {CURLE_GOT_NOTHING, status::connectionBroke},
        {CURLE_PARTIAL_FILE, status::connectionBroke},
        {CURLE_SEND_ERROR, status::connectionBroke},
        {CURLE_RECV_ERROR, status::connectionBroke},
        {CURLE_SSL_CERTPROBLEM, status::unusableCertificate},
        {CURLE_SSL_CACERT_BADFILE, status::unusableCertificate},
        {CURLE_BAD_CONTENT_ENCODING, status::clientFailure},
        {CURLE_OUT_OF_MEMORY, status::clientFailure},
    };
    for (const auto& [result, expected] : rows) {
        EXPECT_EQ(statusOf(result), expected) << result;
    }
}

TEST(CurlStatus, AnAlertInPlaceOfAReplyRefusesTheHandshake) {
    EXPECT_EQ(statusOf(CURLE_RECV_ERROR, alert(false)), status::handshakeFailed);
    EXPECT_EQ(
        failureReason(CURLE_RECV_ERROR, "Broken", alert(false)),
        "Broken; the server ended TLS with an alert");
}

TEST(CurlStatus, AnAlertWithinAReplyBreaksIt) {
    EXPECT_EQ(statusOf(CURLE_RECV_ERROR, alert(true)), status::connectionBroke);
    EXPECT_EQ(failureReason(CURLE_RECV_ERROR, "Broken", alert(true)), "Broken");
}

TEST(CurlStatus, AServerThatIsNotTrustedStaysThatWhateverItSent) {
    EXPECT_EQ(statusOf(CURLE_PEER_FAILED_VERIFICATION, alert(false)), status::untrustedServer);
}

TEST(CurlStatus, WhatTheToolRefusedComesBeforeLibcurlsResult) {
    TransferNotes tooLarge;
    tooLarge.replyTooLarge = true;
    EXPECT_EQ(statusOf(CURLE_WRITE_ERROR, tooLarge), status::replyTooLarge);
    EXPECT_EQ(
        failureReason(CURLE_WRITE_ERROR, "Stopped", tooLarge),
        "Stopped; the reply is over the limit");
    TransferNotes sentOnce;
    sentOnce.resendRejected = true;
    EXPECT_EQ(statusOf(CURLE_SEND_FAIL_REWIND, sentOnce), status::connectionBroke);
    EXPECT_EQ(
        failureReason(CURLE_SEND_FAIL_REWIND, "No resend", sentOnce),
        "No resend; the connection broke; the request is not sent again");
}

TEST(CurlStatus, NoMemoryWithinTheHeadIsALineThatIsTooLong) {
    TransferNotes notes;
    EXPECT_EQ(statusOf(CURLE_OUT_OF_MEMORY, notes), status::clientFailure);
    notes.requestSent = true;
    EXPECT_EQ(statusOf(CURLE_OUT_OF_MEMORY, notes), status::replyTooLarge);
    EXPECT_EQ(
        failureReason(CURLE_OUT_OF_MEMORY, "Out of memory", notes),
        "Out of memory; a line of the reply's head is over the limit, or there is no memory for "
        "it");
    notes.headersComplete = true;
    EXPECT_EQ(statusOf(CURLE_OUT_OF_MEMORY, notes), status::clientFailure);
    EXPECT_EQ(failureReason(CURLE_OUT_OF_MEMORY, "Out of memory", notes), "Out of memory");
}

TEST(CurlStatus, LibcurlsSuccessNeedsAWholeHead) {
    TransferNotes notes;
    notes.tlsClosed = true;
    EXPECT_EQ(statusOf(CURLE_OK, notes), status::connectionBroke);
    EXPECT_EQ(
        failureReason(CURLE_OK, "", notes), "the connection ended before the reply was whole");
    notes.headersComplete = true;
    EXPECT_EQ(statusOf(CURLE_OK, notes), status::success);
}

TEST(CurlStatus, AFailureWithoutATextHasLibcurlsGeneralOne) {
    EXPECT_EQ(
        failureReason(CURLE_COULDNT_CONNECT, "", {}), curl_easy_strerror(CURLE_COULDNT_CONNECT));
}

}  // namespace
