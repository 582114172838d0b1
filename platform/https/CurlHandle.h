#pragma once

#include "https/TransferNotes.h"

#include <curl/curl.h>
#include <memory>
#include <string>

namespace arkeon {

/// A libcurl handle with the connection that it keeps to one server, for the whole process. The
/// program has one thread.
class CurlHandle {
public:
    /// The handle for this server and port. Makes libcurl ready on the first call.
    static CurlHandle& forServer(const std::string& server, int port);

    /// Null when libcurl could not be made ready.
    CURL* get() const { return handle_.get(); }

    /// What the callbacks note; outlives the connections.
    TransferNotes& notes() { return notes_; }

private:
    struct Release {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    explicit CurlHandle(CURL* handle) : handle_(handle) {}
    bool connectionEnded() const;

    TransferNotes notes_;
    std::unique_ptr<CURL, Release> handle_;
};

}  // namespace arkeon
