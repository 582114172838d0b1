#include "https/TransferNotes.h"

#include "https/ClientLibraries.h"
#include "https/ClientLimits.h"
#include "https/ReplyFraming.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <sys/socket.h>
#include <utility>

namespace arkeon {
namespace {

TransferNotes& notesOf(void* data) {
    return *static_cast<TransferNotes*>(data);
}

/// How long the decoded body is likely to be, `most` at most; 0 when the reply's head does not
/// tell.
std::size_t expectedLength(CURL* handle, std::size_t most) {
    constexpr std::size_t compression = 16;  // more than listings are compressed
    curl_off_t announced = 0;
    curl_header* coding = nullptr;
    client().curl_easy_getinfo(handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (announced <= 0) {
        return 0;
    }
    const bool compressed =
        client().curl_easy_header(handle, "Content-Encoding", 0, CURLH_HEADER, -1, &coding) ==
        CURLHE_OK;
    const std::size_t length = std::min(static_cast<std::size_t>(announced), most);
    return compressed ? std::min(length * compression, most) : length;
}

/// Takes the room for the whole body at once, so that a large one need not be moved as it grows.
/// Only what is written to takes memory. Where so much room cannot be had, the body grows.
void makeRoom(TransferNotes& notes) {
    try {
        notes.body.reserve(expectedLength(notes.handle, notes.bodyLimit));
    } catch (const std::exception&) {
        return;
    }
}

std::size_t onBody(char* data, std::size_t one, std::size_t size, void* context) {
    TransferNotes& notes = notesOf(context);
    if (size > notes.bodyLimit - notes.body.size()) {
        notes.replyTooLarge = true;
        return 0;
    }
    if (notes.body.empty()) {
        makeRoom(notes);
    }
    try {
        notes.body.append(data, size);
    } catch (const std::exception&) {
        notes.outOfMemory = true;
        return 0;
    }
    return one * size;
}

/// An interim reply (1xx) has a head of its own; the final reply's status line starts anew.
void noteStatusLine(TransferNotes& notes, std::string_view line) {
    const std::size_t blank = line.find(' ');
    notes.insideHead = true;
    notes.replyIsInterim =
        blank != std::string_view::npos && line.substr(blank + 1).starts_with('1');
}

/// @return whether the reply may go on
bool noteEndOfHead(TransferNotes& notes) {
    notes.insideHead = false;
    notes.replyHeadWhole = !notes.replyIsInterim;
    notes.lengthUnclear = notes.replyHeadWhole && !hasClearLength(notes.handle);
    return !notes.lengthUnclear;
}

/// The lines of all heads, then those that may follow a body in chunks.
std::size_t onHeader(char* data, std::size_t one, std::size_t size, void* context) {
    TransferNotes& notes = notesOf(context);
    const std::string_view line(data, size);
    notes.replyBegun = true;
    notes.headBytes += size;
    if (notes.headBytes > largestHead) {
        notes.replyTooLarge = true;
        return 0;
    }
    if (notes.replyHeadWhole) {
        return one * size;
    }
    if (!notes.insideHead) {
        noteStatusLine(notes, line);
    } else if (line == "\r\n" || line == "\n") {
        return noteEndOfHead(notes) ? one * size : 0;
    }
    return one * size;
}

/// A compressed body may go on for ever and come to nothing, so that the bytes that arrive count as
/// those that are decoded do.
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

/// On a kept connection that turns out dead libcurl sends the request again, a PATCH as well,
/// though the server may have carried it out. Neither a new connection nor another kept one is
/// given to it.
bool refuseResend(TransferNotes& notes) {
    notes.resendRefused = notes.resendRefused || notes.requestSent;
    return notes.resendRefused;
}

curl_socket_t onSocket(void* context, curlsocktype /*purpose*/, curl_sockaddr* address) {
    if (refuseResend(notesOf(context))) {
        return CURL_SOCKET_BAD;
    }
    // libcurl makes the socket non-blocking as well, but does not look whether that succeeds; a
    // transfer on a blocking socket has no time-outs.
    return socket(
        address->family, address->socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address->protocol);
}

int onRequest(void* context, char* /*peer*/, char* /*local*/, int /*peerPort*/, int /*localPort*/) {
    return refuseResend(notesOf(context)) ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

int notesIndex() {
    static const int index = client().CRYPTO_get_ex_new_index(
        CRYPTO_EX_INDEX_SSL_CTX, 0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

void onTlsState(const SSL* connection, int where, int value) {
    constexpr int levelShift = 8;
    if ((where & SSL_CB_READ_ALERT) != SSL_CB_READ_ALERT) {
        return;
    }
    TransferNotes& notes =
        notesOf(client().SSL_CTX_get_ex_data(client().SSL_get_SSL_CTX(connection), notesIndex()));
    if (value >> levelShift == SSL3_AL_FATAL) {
        notes.alertReceived = true;
    } else if ((value & 0xFF) == SSL_AD_CLOSE_NOTIFY) {
        notes.tlsClosed = true;
    }
}

CURLcode onTlsContext(CURL* /*handle*/, void* sslContext, void* context) {
    auto* tls = static_cast<SSL_CTX*>(sslContext);
    client().SSL_CTX_set_info_callback(tls, onTlsState);
    return client().SSL_CTX_set_ex_data(tls, notesIndex(), context) == 1 ? CURLE_OK
                                                                         : CURLE_OUT_OF_MEMORY;
}

/// Sets a callback and its context.
template <typename Callback>
CURLcode setCallback(
    CURL* handle, CURLoption function, Callback callback, CURLoption data, TransferNotes& notes) {
    const CURLcode result = client().curl_easy_setopt(handle, function, callback);
    return result == CURLE_OK ? client().curl_easy_setopt(handle, data, static_cast<void*>(&notes))
                              : result;
}

}  // namespace

CURLcode takeNotes(CURL* handle, TransferNotes& notes) {
    notes.handle = handle;
    const CURLcode results[] = {
        setCallback(handle, CURLOPT_WRITEFUNCTION, onBody, CURLOPT_WRITEDATA, notes),
        setCallback(handle, CURLOPT_HEADERFUNCTION, onHeader, CURLOPT_HEADERDATA, notes),
        setCallback(handle, CURLOPT_DEBUGFUNCTION, onDebug, CURLOPT_DEBUGDATA, notes),
        setCallback(handle, CURLOPT_OPENSOCKETFUNCTION, onSocket, CURLOPT_OPENSOCKETDATA, notes),
        setCallback(handle, CURLOPT_PREREQFUNCTION, onRequest, CURLOPT_PREREQDATA, notes),
        setCallback(handle, CURLOPT_SSL_CTX_FUNCTION, onTlsContext, CURLOPT_SSL_CTX_DATA, notes),
        setCallback(handle, CURLOPT_XFERINFOFUNCTION, onProgress, CURLOPT_XFERINFODATA, notes),
        client().curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L),
        // The debug callback is called only then; it takes the place of the output to stderr.
        client().curl_easy_setopt(handle, CURLOPT_VERBOSE, 1L)};
    for (const CURLcode result : results) {
        if (result != CURLE_OK) {
            return result;
        }
    }
    return CURLE_OK;
}

std::string takeBody(TransferNotes& notes) {
    if (notes.body.size() < notes.body.capacity() / 2) {
        notes.body.shrink_to_fit();
    }
    return std::move(notes.body);
}

}  // namespace arkeon
