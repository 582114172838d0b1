#pragma once

#include "devserver/Faults.h"
#include "devserver/Reply.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace httplib {
struct Response;
}

namespace devserver {

/// Lets the faults' waits end when the server stops.
class Interruption {
public:
    /// False when the wait was cut short by the stop.
    bool sleep(std::chrono::milliseconds time);
    bool isInterrupted();
    void interrupt();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool interrupted_ = false;
};

/// In which way a reply is to be sent.
struct Manner {
    Fault fault;
    bool gzip = false;
    /// End the connection afterwards, because bytes of the request are left that nobody reads.
    /// Only for replies with a body.
    bool lastReply = false;
};

/// Puts a reply into the form in which it goes over the wire: headers, gzip where the client
/// takes it, a listing piece by piece, and the bytes as the fault wants them. `interruption`
/// must outlive the response.
void transmit(
    Reply reply, const Manner& manner, Interruption& interruption, httplib::Response& response);

}  // namespace devserver
