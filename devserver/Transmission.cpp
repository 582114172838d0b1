#include "devserver/Transmission.h"

#include "devserver/Gzip.h"
#include "devserver/SampleHosts.h"

#include <httplib.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace devserver {

namespace {

/// A listing is rendered in pieces of about this many bytes; a smaller one goes out whole.
constexpr std::size_t pieceSize = std::size_t{256} * 1024;
/// An endless listing goes out in pieces of at least this many bytes.
constexpr std::size_t endlessPieceSize = std::size_t{16} * 1024;

/// Renders {"hosts":[...]} piece by piece.
class ListingText {
public:
    ListingText(std::shared_ptr<HostListing> listing, Hostile hostile)
        : listing_(std::move(listing)), hostile_(hostile) {}

    /// The next piece; empty only after the end.
    std::string next() {
        std::string piece = std::exchange(start_, "");
        while (!ended_ && piece.size() < pieceSize) {
            addRecord(piece);
        }
        return piece;
    }

    bool ended() const { return ended_; }

private:
    void addRecord(std::string& piece) {
        if (!listing_->next(host_)) {
            piece += "]}";
            ended_ = true;
            return;
        }
        makeHostile(host_, hostile_);
        piece += std::exchange(comma_, ",");
        appendJson(piece, host_);
    }

    std::shared_ptr<HostListing> listing_;
    Hostile hostile_;
    HostRecord host_;
    const char* start_ = "{\"hosts\":[";
    const char* comma_ = "";
    bool ended_ = false;
};

/// What a chunked reply needs until its last chunk.
struct ListingStream {
    ListingText text;
    std::string piece;  ///< rendered already, to be sent next
    std::unique_ptr<Gzip> gzip;

    /// A failure of the database in the middle ends the connection, as the head has gone out.
    bool sendNextOrCut(httplib::DataSink& sink) {
        try {
            return sendNext(sink);
        } catch (const std::exception&) {
            return false;
        }
    }

    bool sendNext(httplib::DataSink& sink) {
        const bool last = text.ended();
        const std::string bytes = gzip ? gzip->add(piece, last) : piece;
        if (!bytes.empty() && !sink.write(bytes.data(), bytes.size())) {
            return false;
        }
        if (last) {
            sink.done();
        } else {
            piece = text.next();
        }
        return true;
    }
};

void stream(ListingText text, std::string piece, bool gzip, httplib::Response& response) {
    auto state = std::make_shared<ListingStream>(ListingStream{
        std::move(text), std::move(piece), gzip ? std::make_unique<Gzip>() : nullptr});
    if (gzip) {
        response.set_header("Content-Encoding", "gzip");
    }
    response.set_chunked_content_provider(
        fullMediaType,
        [state](std::size_t, httplib::DataSink& sink) { return state->sendNextOrCut(sink); });
}

/// Sends the same record again and again until the client has enough or the server stops.
void sendEndless(Interruption& interruption, httplib::Response& response) {
    response.set_header("Connection", "close");
    response.set_content_provider(
        fullMediaType,
        [&interruption, start = "{\"hosts\":[{}"](std::size_t, httplib::DataSink& sink) mutable {
            std::string piece = std::exchange(start, "");
            while (piece.size() < endlessPieceSize) {
                piece += std::string(",{\"uuid\":\"") + localHostId + "\"}";
            }
            return !interruption.isInterrupted() && sink.write(piece.data(), piece.size());
        });
}

/// The bytes of a body and how they are to go out.
struct Altered {
    std::string body;
    std::size_t end = 0;        ///< the bytes that are sent at all
    std::size_t announced = 0;  ///< what Content-Length says
    std::size_t dripBytes = 0;
    std::chrono::milliseconds dripInterval{0};
    bool lastReply = false;
};

Altered altered(std::string body, const Manner& manner) {
    const Fault& fault = manner.fault;
    const auto size = static_cast<long>(body.size());
    Altered plan;
    plan.body = std::move(body);
    plan.announced = static_cast<std::size_t>(std::max(0L, size + fault.lengthChange));
    plan.end = std::min(plan.body.size(), fault.cut.value_or(plan.body.size()));
    plan.dripBytes = fault.dripBytes;
    plan.dripInterval = fault.dripInterval;
    plan.lastReply = manner.lastReply || plan.end != plan.announced;
    return plan;
}

/// False, which ends the connection, also after everything has been sent when it is to end.
bool sendAltered(const Altered& plan, Interruption& interruption, httplib::DataSink& sink) {
    const std::size_t step = plan.dripBytes == 0 ? plan.body.size() + 1 : plan.dripBytes;
    for (std::size_t sent = 0; sent < plan.end; sent += step) {
        const std::size_t size = std::min(step, plan.end - sent);
        if (!sink.write(plan.body.data() + sent, size)) {
            return false;
        }
        if (sent + size < plan.end && !interruption.sleep(plan.dripInterval)) {
            return false;
        }
    }
    return !plan.lastReply;
}

/// Replaces the body that is set by the bytes of the plan.
void setAlteredBody(Altered plan, Interruption& interruption, httplib::Response& response) {
    const std::size_t announced = plan.announced;
    const std::string type = response.get_header_value("Content-Type");
    response.headers.erase("Content-Type");
    auto shared = std::make_shared<Altered>(std::move(plan));
    response.set_content_provider(
        announced, type,
        [shared, &interruption](std::size_t, std::size_t, httplib::DataSink& sink) {
            return sendAltered(*shared, interruption, sink);
        });
}

void setHead(const Reply& reply, httplib::Response& response) {
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers) {
        response.set_header(name, value);
    }
}

void setBody(std::string body, const std::string& type, bool gzip, httplib::Response& response) {
    if (body.empty()) {
        if (!type.empty()) {
            response.set_header("Content-Type", type);
        }
        return;
    }
    // The HTTP library compresses the types it knows by itself, but not ours.
    if (gzip && type == fullMediaType) {
        body = Gzip::compress(body);
        response.set_header("Content-Encoding", "gzip");
    }
    response.set_content(body, type);
}

void renderHost(Reply& reply, Hostile hostile) {
    if (reply.host) {
        makeHostile(*reply.host, hostile);
        appendJson(reply.body, *reply.host);
    }
}

}  // namespace

bool Interruption::sleep(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, time, [this] { return interrupted_; });
}

bool Interruption::isInterrupted() {
    const std::lock_guard lock(mutex_);
    return interrupted_;
}

void Interruption::interrupt() {
    {
        const std::lock_guard lock(mutex_);
        interrupted_ = true;
    }
    changed_.notify_all();
}

void transmit(
    Reply reply, const Manner& manner, Interruption& interruption, httplib::Response& response) {
    const Fault& fault = manner.fault;
    const bool alter = fault.changesTransmission() || manner.lastReply;
    setHead(reply, response);
    if (fault.endless) {
        sendEndless(interruption, response);
        return;
    }
    renderHost(reply, fault.hostile);
    if (reply.listing) {
        ListingText text(std::move(reply.listing), fault.hostile);
        reply.body = text.next();
        if (!text.ended() && !alter) {
            stream(std::move(text), std::move(reply.body), manner.gzip, response);
            return;
        }
        while (!text.ended()) {
            reply.body += text.next();
        }
    }
    setBody(std::move(reply.body), reply.contentType, manner.gzip, response);
    if (alter) {
        setAlteredBody(altered(std::exchange(response.body, {}), manner), interruption, response);
    }
}

}  // namespace devserver
