#pragma once

#include "https/TransferNotes.h"

#include <curl/curl.h>
#include <memory>

namespace arkeon {

/// The one libcurl handle of the process, with the connections it keeps. The program has one
/// thread.
class CurlHandle {
public:
    /// Makes libcurl ready on the first call.
    static CurlHandle& instance();

    /// Null when libcurl could not be made ready.
    CURL* get() const { return handle_.get(); }

    /// What the callbacks note; outlives the connections.
    TransferNotes& notes() { return notes_; }

private:
    struct Release {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    CurlHandle();

    TransferNotes notes_;
    std::unique_ptr<CURL, Release> handle_;
};

}  // namespace arkeon
