#pragma once

#include "https/ClientLibraries.h"
#include "https/TransferNotes.h"

#include <memory>
#include <string>

namespace arkeon {

/// A libcurl handle with the connection that it keeps to one server, for the whole process. The
/// program has one thread.
class CurlHandle {
public:
    /// The handle for this server and port. The client's libraries must have been loaded.
    static CurlHandle& forServer(const std::string& server, int port);

    /// Null when libcurl had no memory for it.
    CURL* get() const { return handle_.get(); }

    /// What the callbacks note; outlives the connections.
    TransferNotes& notes() { return notes_; }

private:
    /// libcurl cleans up what it has made.
    struct Release {
        void operator()(CURL* handle) const { client().curl_easy_cleanup(handle); }
    };

    explicit CurlHandle(CURL* handle) : handle_(handle) {}
    bool connectionEnded() const;

    TransferNotes notes_;
    std::unique_ptr<CURL, Release> handle_;
};

}  // namespace arkeon
