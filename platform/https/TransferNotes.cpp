#include "https/TransferNotes.h"

#include "https/ReplyFraming.h"

#include <new>
#include <openssl/ssl.h>
#include <string_view>
#include <sys/socket.h>

namespace arkeon {
namespace {

/// The limit of a reply's header sections, in bytes: far above what a primary server sends, and
/// below libcurl's own limit, which it reports as a broken connection.
constexpr std::size_t maxHeaderBytes = std::size_t{256} * 1024;

TransferNotes& notesOf(void* data) {
    return *static_cast<TransferNotes*>(data);
}

std::size_t onBody(char* data, std::size_t one, std::size_t size, void* context) {
    TransferNotes& notes = notesOf(context);
    if (size > notes.bodyLimit - notes.body.size()) {
        notes.replyTooLarge = true;
        return 0;
    }
    try {
        notes.body.append(data, size);
    } catch (const std::bad_alloc&) {  // must not pass through libcurl
        notes.outOfMemory = true;
        return 0;
    }
    return one * size;
}

/// An interim reply (1xx) has a header section of its own; another status line follows it.
void noteStatusLine(TransferNotes& notes, std::string_view line) {
    const std::size_t space = line.find(' ');
    notes.insideHeaders = true;
    notes.replyIsInterim =
        space != std::string_view::npos && line.substr(space + 1).starts_with('1');
}

/// @return whether the transfer may continue
bool noteEndOfHeaders(TransferNotes& notes) {
    notes.insideHeaders = false;
    notes.headersComplete = !notes.replyIsInterim;
    notes.lengthAmbiguous = notes.headersComplete && !hasUnambiguousLength(notes.handle);
    return !notes.lengthAmbiguous;
}

/// Gets the lines of all header sections, then the trailers of a chunked body (RFC 9112, 7.1.2).
std::size_t onHeader(char* data, std::size_t one, std::size_t size, void* context) {
    TransferNotes& notes = notesOf(context);
    const std::string_view line(data, size);
    notes.replyBegun = true;
    notes.headerBytes += size;
    if (notes.headerBytes > maxHeaderBytes) {
        notes.replyTooLarge = true;
        return 0;
    }
    if (notes.headersComplete) {
        return one * size;
    }
    if (!notes.insideHeaders) {
        noteStatusLine(notes, line);
    } else if (line == "\r\n" || line == "\n") {
        return noteEndOfHeaders(notes) ? one * size : 0;
    }
    return one * size;
}

/// A compressed body can be endless and decode to nothing, so the limit also holds for the bytes
/// that arrive.
int onProgress(
    void* context, curl_off_t /*length*/, curl_off_t arrived, curl_off_t /*toSend*/,
    curl_off_t /*sent*/) {
    TransferNotes& notes = notesOf(context);
    if (static_cast<std::size_t>(arrived) > notes.bodyLimit) {
        notes.replyTooLarge = true;
    }
    return notes.replyTooLarge ? 1 : 0;
}

int onDebug(
    CURL* /*handle*/, curl_infotype type, char* /*data*/, std::size_t /*size*/, void* context) {
    if (type == CURLINFO_HEADER_OUT) {
        notesOf(context).requestSent = true;
    }
    return 0;
}

/// On a kept connection that turns out to be dead, libcurl sends the request again, even a PATCH
/// that the server may have carried out. So it gets neither a new connection nor another kept one.
bool rejectResend(TransferNotes& notes) {
    notes.resendRejected = notes.resendRejected || notes.requestSent;
    return notes.resendRejected;
}

curl_socket_t onSocket(void* context, curlsocktype /*purpose*/, curl_sockaddr* address) {
    if (rejectResend(notesOf(context))) {
        return CURL_SOCKET_BAD;
    }
    // libcurl makes the socket non-blocking too, but does not check whether that succeeded; a
    // transfer on a blocking socket has no timeouts.
    return socket(
        address->family, address->socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address->protocol);
}

int onRequest(void* context, char* /*peer*/, char* /*local*/, int /*peerPort*/, int /*localPort*/) {
    return rejectResend(notesOf(context)) ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

int notesIndex() {
    static const int index =
        CRYPTO_get_ex_new_index(CRYPTO_EX_INDEX_SSL_CTX, 0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

void onTlsState(const SSL* connection, int where, int value) {
    constexpr int levelShift = 8;
    if ((where & SSL_CB_READ_ALERT) != SSL_CB_READ_ALERT) {
        return;
    }
    TransferNotes& notes = notesOf(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), notesIndex()));
    if (value >> levelShift == SSL3_AL_FATAL) {
        notes.alertReceived = true;
    } else if ((value & 0xFF) == SSL_AD_CLOSE_NOTIFY) {
        notes.tlsClosed = true;
    }
}

CURLcode onTlsContext(CURL* /*handle*/, void* sslContext, void* context) {
    auto* tls = static_cast<SSL_CTX*>(sslContext);
    SSL_CTX_set_info_callback(tls, onTlsState);
    return SSL_CTX_set_ex_data(tls, notesIndex(), context) == 1 ? CURLE_OK : CURLE_OUT_OF_MEMORY;
}

/// Sets a callback and its context.
template <typename Callback>
CURLcode setCallback(
    CURL* handle, CURLoption function, Callback callback, CURLoption data, TransferNotes& notes) {
    const CURLcode result = curl_easy_setopt(handle, function, callback);
    return result == CURLE_OK ? curl_easy_setopt(handle, data, static_cast<void*>(&notes)) : result;
}

}  // namespace

CURLcode installCallbacks(CURL* handle, TransferNotes& notes) {
    notes.handle = handle;
    const CURLcode results[] = {
        setCallback(handle, CURLOPT_WRITEFUNCTION, onBody, CURLOPT_WRITEDATA, notes),
        setCallback(handle, CURLOPT_HEADERFUNCTION, onHeader, CURLOPT_HEADERDATA, notes),
        setCallback(handle, CURLOPT_DEBUGFUNCTION, onDebug, CURLOPT_DEBUGDATA, notes),
        setCallback(handle, CURLOPT_OPENSOCKETFUNCTION, onSocket, CURLOPT_OPENSOCKETDATA, notes),
        setCallback(handle, CURLOPT_PREREQFUNCTION, onRequest, CURLOPT_PREREQDATA, notes),
        setCallback(handle, CURLOPT_SSL_CTX_FUNCTION, onTlsContext, CURLOPT_SSL_CTX_DATA, notes),
        setCallback(handle, CURLOPT_XFERINFOFUNCTION, onProgress, CURLOPT_XFERINFODATA, notes),
        curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L),
        // The debug callback is called only then; it takes the place of the output to stderr.
        curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L)};
    for (const CURLcode result : results) {
        if (result != CURLE_OK) {
            return result;
        }
    }
    return CURLE_OK;
}

}  // namespace arkeon
