#include "https/Transfer.h"

#include "arkeon/status.h"
#include "https/ClientLibraries.h"
#include "https/ClientLimits.h"
#include "https/CurlHandle.h"
#include "https/CurlStatus.h"
#include "https/ServerAddress.h"
#include "log/Report.h"

#include <array>
#include <memory>
#include <new>

namespace arkeon {
namespace {

/// libcurl cleans up the addresses that it has made.
struct UrlRelease {
    void operator()(CURLU* url) const { client().curl_url_cleanup(url); }
};

/// The same for lists of header lines.
struct ListRelease {
    void operator()(curl_slist* list) const { client().curl_slist_free_all(list); }
};

using Url = std::unique_ptr<CURLU, UrlRelease>;
using HeaderList = std::unique_ptr<curl_slist, ListRelease>;

/// Set part by part, so that no text in the server's name can become another part.
Url makeUrl(const Request& request) {
    Url url(client().curl_url());
    const std::string host = urlHost(request.server);
    const std::string port = std::to_string(request.port);
    const bool whole =
        url != nullptr &&
        client().curl_url_set(url.get(), CURLUPART_SCHEME, "https", 0) == CURLUE_OK &&
        client().curl_url_set(url.get(), CURLUPART_HOST, host.c_str(), 0) == CURLUE_OK &&
        client().curl_url_set(url.get(), CURLUPART_PORT, port.c_str(), 0) == CURLUE_OK;
    return whole ? std::move(url) : nullptr;
}

HeaderList makeHeaders(const Request& request) {
    HeaderList list;
    for (const std::string& header : request.headers) {
        curl_slist* longer = client().curl_slist_append(list.get(), header.c_str());
        if (longer == nullptr) {
            throw std::bad_alloc();
        }
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

/// One use of the process's handle, with all its options; the handle is clean again afterwards, so
/// that a connection that is closed later finds no pointer to what is gone.
class Exchange {
public:
    Exchange(const Request& request, Credentials& credentials)
        : handle_(CurlHandle::forServer(request.server, request.port)), request_(request),
          credentials_(credentials), url_(makeUrl(request)), headers_(makeHeaders(request)) {}
    ~Exchange() {
        if (handle_.get() != nullptr) {
            client().curl_easy_reset(handle_.get());
        }
        handle_.notes() = TransferNotes();
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    int perform(Reply& reply);

private:
    template <typename Value>
    void set(CURLoption option, Value value) {
        const CURLcode result = client().curl_easy_setopt(handle_.get(), option, value);
        optionFailure_ = optionFailure_ == CURLE_OK ? result : optionFailure_;
    }
    void setBlob(CURLoption option, std::string& pem);
    void setAddress();
    void setMethod();
    void setTls();
    void setLimits();
    void setNothingElse();
    bool prepare();
    int finish(CURLcode result, Reply& reply);
    std::string_view reasonOf(CURLcode result) const;
    int failed(int status, std::string_view reason, std::string_view observation = {}) const;

    CurlHandle& handle_;
    const Request& request_;
    Credentials& credentials_;
    Url url_;
    HeaderList headers_;
    CURLcode optionFailure_ = CURLE_OK;
    std::array<char, CURL_ERROR_SIZE> errorText_{};
};

void Exchange::setAddress() {
    set(CURLOPT_CURLU, url_.get());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REQUEST_TARGET, request_.target.c_str());
    set(CURLOPT_HTTPHEADER, headers_.get());
}

/// A body is sent the way of a POST, whatever the method is called.
void Exchange::setMethod() {
    set(CURLOPT_HTTPGET, 1L);
    if (request_.body != nullptr) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDS, request_.body->data());
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body->size()));
    }
    set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_ACCEPT_ENCODING, "");
}

void Exchange::setBlob(CURLoption option, std::string& pem) {
    curl_blob blob{pem.data(), pem.size(), CURL_BLOB_COPY};
    set(option, &blob);
}

/// Peer and name are verified by default; the library's own default folder of authorities is left
/// out. The empty password makes an encrypted key fail instead of asking at the terminal.
void Exchange::setTls() {
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_CAPATH, nullptr);
    setBlob(CURLOPT_CAINFO_BLOB, credentials_.authorities);
    setBlob(CURLOPT_SSLCERT_BLOB, credentials_.certificate);
    setBlob(CURLOPT_SSLKEY_BLOB, credentials_.privateKey);
    set(CURLOPT_KEYPASSWD, "");
}

void Exchange::setLimits() {
    set(CURLOPT_CONNECTTIMEOUT_MS, clientLimits().connectMilliseconds);
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, clientLimits().stallSeconds);
}

/// No proxy (an empty one overrides the environment), no redirect, no .netrc.
void Exchange::setNothingElse() {
    set(CURLOPT_PROXY, "");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
}

bool Exchange::prepare() {
    handle_.notes() = TransferNotes();
    handle_.notes().bodyLimit = clientLimits().bodyBytes;
    set(CURLOPT_ERRORBUFFER, errorText_.data());
    setAddress();
    setMethod();
    setTls();
    setLimits();
    setNothingElse();
    const CURLcode noting = takeNotes(handle_.get(), handle_.notes());
    optionFailure_ = optionFailure_ == CURLE_OK ? noting : optionFailure_;
    return optionFailure_ == CURLE_OK;
}

/// libcurl's own words; where it saw nothing wrong, it has none.
std::string_view Exchange::reasonOf(CURLcode result) const {
    if (errorText_.front() != '\0') {
        return errorText_.data();
    }
    return result == CURLE_OK ? "" : client().curl_easy_strerror(result);
}

int Exchange::failed(int status, std::string_view reason, std::string_view observation) const {
    report(
        {"HTTPS request to ", request_.server, ", port ", std::to_string(request_.port), ": ",
         reason, reason.empty() || observation.empty() ? "" : "; ", observation});
    return status;
}

int Exchange::finish(CURLcode result, Reply& reply) {
    const int status = transferStatus(handle_.get(), result, handle_.notes());
    if (status != status::success) {
        return failed(status, reasonOf(result), observed(result, handle_.notes()));
    }
    long httpStatus = 0;
    client().curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &httpStatus);
    reply.httpStatus = static_cast<int>(httpStatus);
    reply.body = takeBody(handle_.notes());
    return status::success;
}

int Exchange::perform(Reply& reply) {
    if (handle_.get() == nullptr) {
        return failed(status::clientFailure, "libcurl has no memory");
    }
    if (url_ == nullptr) {
        return failed(status::invalidServerName, "no URL can be made of server and port");
    }
    if (!prepare()) {
        return failed(status::clientFailure, client().curl_easy_strerror(optionFailure_));
    }
    return finish(client().curl_easy_perform(handle_.get()), reply);
}

}  // namespace

int transfer(const Request& request, Credentials& credentials, Reply& reply) {
    return loadClientLibraries() ? Exchange(request, credentials).perform(reply)
                                 : status::clientFailure;
}

}  // namespace arkeon
