#include "https/CurlTransport.h"

#include "https/CurlStatus.h"
#include "https/TransferNotes.h"

#include <array>
#include <cstdlib>
#include <curl/curl.h>
#include <memory>
#include <new>
#include <openssl/crypto.h>
#include <poll.h>

namespace arkeon {
namespace {

template <auto function>
struct Release {
    template <typename Object>
    void operator()(Object* object) const {
        function(object);
    }
};
using Handle = std::unique_ptr<CURL, Release<curl_easy_cleanup>>;
using Url = std::unique_ptr<CURLU, Release<curl_url_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, Release<curl_slist_free_all>>;

/// Set part by part, so that no text in the server's name can become another part.
Url makeUrl(const HttpsRequest& request) {
    Url url(curl_url());
    const std::string port = std::to_string(request.port);
    const bool valid =
        url != nullptr && curl_url_set(url.get(), CURLUPART_SCHEME, "https", 0) == CURLUE_OK &&
        curl_url_set(url.get(), CURLUPART_HOST, request.host.c_str(), 0) == CURLUE_OK &&
        curl_url_set(url.get(), CURLUPART_PORT, port.c_str(), 0) == CURLUE_OK;
    return valid ? std::move(url) : nullptr;
}

HeaderList makeHeaders(const HttpsRequest& request) {
    HeaderList list;
    for (const std::string& header : request.headers) {
        curl_slist* longer = curl_slist_append(list.get(), header.c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

/// Sets the options of one request; remembers the first that libcurl rejects.
class Options {
public:
    explicit Options(CURL* handle) : handle_(handle) {}

    template <typename Value>
    void set(CURLoption option, Value value) {
        const CURLcode result = curl_easy_setopt(handle_, option, value);
        failure_ = failure_ == CURLE_OK ? result : failure_;
    }

    void setTarget(const HttpsRequest& request, CURLU* url, curl_slist* headers);
    void setMethod(const HttpsRequest& request);
    void setTls(const Credentials& credentials);
    void setLimits(const TransferLimits& limits);
    void disableProxyRedirectAndNetrc();

    CURLcode failure() const { return failure_; }

private:
    void setBlob(CURLoption option, const std::string& pem);

    CURL* handle_;
    CURLcode failure_ = CURLE_OK;
};

void Options::setTarget(const HttpsRequest& request, CURLU* url, curl_slist* headers) {
    set(CURLOPT_CURLU, url);
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REQUEST_TARGET, request.target.c_str());
    set(CURLOPT_HTTPHEADER, headers);
}

/// Any request with a body is set up as a POST; CURLOPT_CUSTOMREQUEST only changes the method name.
void Options::setMethod(const HttpsRequest& request) {
    set(CURLOPT_HTTPGET, 1L);
    if (request.body != nullptr) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDS, request.body->data());
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body->size()));
    }
    set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_ACCEPT_ENCODING, "");
}

void Options::setBlob(CURLoption option, const std::string& pem) {
    curl_blob blob{const_cast<char*>(pem.data()), pem.size(), CURL_BLOB_COPY};
    set(option, &blob);
}

/// The peer and its name are verified by default; libcurl's own directory of CA certificates is
/// left out. The empty password makes an encrypted key fail instead of prompting at the terminal.
void Options::setTls(const Credentials& credentials) {
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_CAPATH, nullptr);
    setBlob(CURLOPT_CAINFO_BLOB, credentials.caBundle);
    setBlob(CURLOPT_SSLCERT_BLOB, credentials.certificate);
    setBlob(CURLOPT_SSLKEY_BLOB, credentials.privateKey);
    set(CURLOPT_KEYPASSWD, "");
}

void Options::setLimits(const TransferLimits& limits) {
    set(CURLOPT_CONNECTTIMEOUT_MS, limits.connectMilliseconds);
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, limits.stallSeconds);
}

/// No proxy (an empty one overrides the environment), no redirect, no .netrc.
void Options::disableProxyRedirectAndNetrc() {
    set(CURLOPT_PROXY, "");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
}

HttpsReply failed(Status status, std::string reason) {
    return {status, std::move(reason), 0, {}};
}

/// Keeps one libcurl handle, and with it the connection, for all requests.
class CurlTransport : public HttpsTransport {
public:
    explicit CurlTransport(const TransferLimits& limits) : limits_(limits) {}

    HttpsReply send(const HttpsRequest& request, const Credentials& credentials) override;

private:
    bool connectionEnded() const;
    HttpsReply perform(const HttpsRequest& request, const Credentials& credentials);
    HttpsReply finish(CURLcode result, const char* libcurlText);

    const TransferLimits limits_;
    TransferNotes notes_;  // outlives the handle, whose callbacks write to it
    Handle handle_;
};

/// Whether the kept connection has something to read although nothing was asked: the server has
/// closed it or is about to. libcurl considers a connection alive while an unread close_notify
/// waits on it.
bool CurlTransport::connectionEnded() const {
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (curl_easy_getinfo(handle_.get(), CURLINFO_ACTIVESOCKET, &socket) != CURLE_OK ||
        socket == CURL_SOCKET_BAD) {
        return false;
    }
    pollfd waiting{socket, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

HttpsReply CurlTransport::send(const HttpsRequest& request, const Credentials& credentials) {
    if (handle_ == nullptr || connectionEnded()) {
        handle_.reset(curl_easy_init());
    }
    if (handle_ == nullptr) {
        return failed(status::clientFailure, "libcurl cannot make a handle");
    }
    notes_ = TransferNotes();
    notes_.bodyLimit = limits_.bodyBytes;
    // The options point to this request, so the handle must not keep them.
    const std::unique_ptr<CURL, Release<curl_easy_reset>> reset(handle_.get());
    return perform(request, credentials);
}

HttpsReply CurlTransport::perform(const HttpsRequest& request, const Credentials& credentials) {
    const Url url = makeUrl(request);
    if (url == nullptr) {
        return failed(status::invalidServerName, "no URL can be made of server and port");
    }
    const HeaderList headers = makeHeaders(request);
    std::array<char, CURL_ERROR_SIZE> errorText{};
    Options options(handle_.get());
    options.set(CURLOPT_ERRORBUFFER, errorText.data());
    options.setTarget(request, url.get(), headers.get());
    options.setMethod(request);
    options.setTls(credentials);
    options.setLimits(limits_);
    options.disableProxyRedirectAndNetrc();
    const CURLcode failure =
        options.failure() == CURLE_OK ? installCallbacks(handle_.get(), notes_) : options.failure();
    if (failure != CURLE_OK) {
        return failed(status::clientFailure, curl_easy_strerror(failure));
    }
    return finish(curl_easy_perform(handle_.get()), errorText.data());
}

HttpsReply CurlTransport::finish(CURLcode result, const char* libcurlText) {
    if (notes_.outOfMemory) {
        throw std::bad_alloc();
    }
    const Status status = transferStatus(handle_.get(), result, notes_);
    if (status != status::success) {
        return failed(status, failureReason(result, libcurlText, notes_));
    }
    long httpStatus = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &httpStatus);
    return {status, {}, static_cast<int>(httpStatus), std::move(notes_.body)};
}

/// Environment variables do not affect TLS or name resolution: libcurl would write the session keys
/// to the file SSLKEYLOGFILE, OpenSSL would read the configuration OPENSSL_CONF, and the resolver
/// would take aliases and a domain from HOSTALIASES and LOCALDOMAIN. OpenSSL need not free its
/// tables when the process ends.
bool initializeLibraries() {
    for (const char* variable : {"SSLKEYLOGFILE", "HOSTALIASES", "LOCALDOMAIN"}) {
        unsetenv(variable);
    }
    return OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG | OPENSSL_INIT_NO_ATEXIT, nullptr) ==
               1 &&
           curl_global_init(CURL_GLOBAL_ALL) == CURLE_OK;
}

}  // namespace

std::unique_ptr<HttpsTransport> newCurlTransport(const TransferLimits& limits) {
    return initializeLibraries() ? std::make_unique<CurlTransport>(limits) : nullptr;
}

}  // namespace arkeon
