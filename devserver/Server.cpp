#include "devserver/Server.h"

#include "devserver/Connections.h"
#include "devserver/Failure.h"
#include "devserver/MediaType.h"
#include "devserver/TlsSetup.h"
#include "devserver/Transmission.h"

#include <httplib.h>

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <thread>

namespace devserver {

namespace {

/// A connection keeps a worker for as long as it is open.
constexpr std::size_t workers = 160;
constexpr int backlog = 1024;
constexpr std::size_t largestBody = std::size_t{64} * 1024;
/// How much of a body that is too large is read before the connection is given up.
constexpr std::size_t largestDiscarded = std::size_t{1024} * 1024;

/// How long a connection may stay without a request, and how many requests it may carry.
constexpr std::chrono::seconds longestIdleness{5};
constexpr std::size_t mostRequests = 10'000;
/// How long a client may take to send the next bytes of a request and to take those of a reply.
constexpr std::chrono::seconds longestRead{10};
constexpr std::chrono::seconds longestWrite{30};

/// How long a stop waits for the requests that are being answered, and how often it looks.
constexpr std::chrono::milliseconds longestAnswer{2000};
constexpr std::chrono::milliseconds betweenLooks{10};
/// How long the HTTP library may take to end after that, before every connection is cut.
constexpr std::chrono::milliseconds longestEnding{500};

[[noreturn]] void failToListen(const std::string& address, int port) {
    throw Failure(
        "cannot listen on " + address + " port " + std::to_string(port) + ": " +
        std::strerror(errno));
}

bool announcesBody(const httplib::Request& request) {
    return request.has_header("Content-Length") || request.has_header("Transfer-Encoding");
}

Call callOf(const httplib::Request& request) {
    Call call;
    call.method = request.method;
    call.target = request.target;
    call.peer = peerCommonName(request.ssl);
    call.accept = request.get_header_value("Accept");
    call.contentType = request.get_header_value("Content-Type");
    call.authorization = request.get_header_value("Authorization");
    // The library has percent-decoded the values of all headers; twice would be once too often.
    call.auditReason = request.get_header_value("X-Arkeon-Audit-Reason");
    return call;
}

/// Reads the body as far as it is allowed to go and skips a moderate excess.
void readBody(const httplib::Request& request, const httplib::ContentReader& reader, Call& call) {
    if (!announcesBody(request)) {
        return;
    }
    std::size_t size = 0;
    const auto take = [&](const char* data, std::size_t length) {
        size += length;
        call.bodyTooLarge = size > largestBody;
        if (!call.bodyTooLarge) {
            call.body.append(data, length);
        }
        return size <= largestDiscarded;
    };
    const bool complete = request.is_multipart_form_data()
                              ? reader([](const httplib::MultipartFormData&) { return true; }, take)
                              : reader(take);
    // The library leaves the chunks of a DELETE unread.
    const bool unread = call.method == "DELETE" && request.has_header("Transfer-Encoding");
    call.incomplete = !complete || unread;
}

}  // namespace

/// Everything that serves: TLS, the HTTP server and the connections it has.
struct Server::Machinery {
    Machinery(
        const CertificateAuthority& authority, Endpoint place, Resources& hosts, Faults& rules)
        : endpoint(std::move(place)), resources(hosts), faults(rules),
          tls(authority, endpoint.identity, endpoint.names, rules),
          http([this](SSL_CTX& context) { return tls.apply(context); }) {
        if (!http.is_valid()) {
            throw Failure("TLS cannot be set up");
        }
        connections.watch(http.ssl_context());
        configure();
        route();
    }

    void configure();
    void route();
    void answer(const httplib::Request& request, httplib::Response& response, const Call& call);
    Reply replyTo(const Call& call, const Fault& fault);
    Reply recorded(const Call& call, Reply reply);
    void describeRefusal(const httplib::Request& request, httplib::Response& response);

    Endpoint endpoint;
    Resources& resources;
    Faults& faults;
    Connections connections;
    Interruption interruption;
    TlsSetup tls;
    httplib::SSLServer http;
    int listener = -1;
    std::thread thread;
};

void Server::Machinery::configure() {
    http.set_socket_options([this](int socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        listener = socket;
    });
    http.set_tcp_nodelay(true);
    http.set_keep_alive_timeout(longestIdleness.count());
    http.set_keep_alive_max_count(mostRequests);
    http.set_read_timeout(longestRead);
    http.set_write_timeout(longestWrite);
    http.new_task_queue = [] {
        return new httplib::ThreadPool(workers);
    };
}

void Server::Machinery::route() {
    // Everything goes one way, whatever the path; a dot would not fit a line feed.
    const char* const anything = "[\\s\\S]*";
    const auto plain = [this](const httplib::Request& request, httplib::Response& response) {
        Call call = callOf(request);
        call.incomplete = announcesBody(request);
        answer(request, response, call);
    };
    const auto withBody = [this](
                              const httplib::Request& request, httplib::Response& response,
                              const httplib::ContentReader& reader) {
        Call call = callOf(request);
        readBody(request, reader, call);
        answer(request, response, call);
    };
    http.Get(anything, plain).Options(anything, plain);
    http.Put(anything, withBody).Post(anything, withBody);
    http.Patch(anything, withBody).Delete(anything, withBody);
    http.set_error_handler([this](const httplib::Request& request, httplib::Response& response) {
        describeRefusal(request, response);
    });
    // The library calls its logger when a reply has been sent.
    http.set_logger([this](const httplib::Request& request, const httplib::Response&) {
        connections.setBusy(request.ssl, false);
    });
}

void Server::Machinery::answer(
    const httplib::Request& request, httplib::Response& response, const Call& call) {
    connections.setBusy(request.ssl, true);
    Manner manner;
    manner.fault = faults.forRequest(call.method, call.target).value_or(Fault{});
    manner.gzip = mediaTypes::acceptsGzip(request.get_header_value("Accept-Encoding"));
    manner.lastReply = call.incomplete;
    try {
        interruption.sleep(manner.fault.delay);
        Reply reply = replyTo(call, manner.fault);
        if (manner.fault.drop) {
            shutDown(request.ssl);
        }
        transmit(std::move(reply), manner, interruption, response);
    } catch (const std::exception&) {
        transmit(errorReply(errors::serverFailure), {}, interruption, response);
    }
}

Reply Server::Machinery::replyTo(const Call& call, const Fault& fault) {
    if (!fault.replacesReply()) {
        return resources.handle(call);
    }
    return recorded(call, fault.replacement());
}

/// The reply once its row of the audit trail is written.
Reply Server::Machinery::recorded(const Call& call, Reply reply) {
    try {
        resources.recordOnly(call, reply);
        return reply;
    } catch (const std::exception&) {
        return errorReply(errors::serverFailure);
    }
}

/// Gives the refusals of the HTTP library itself a body like all others. Of an unknown method or
/// an address that is too long the library tells nothing that could be recorded.
void Server::Machinery::describeRefusal(
    const httplib::Request& request, httplib::Response& response) {
    if (!response.body.empty() || response.has_header("Content-Type")) {
        return;
    }
    const bool oddMethod = request.method == "TRACE" || request.method == "CONNECT";
    Reply reply = errorReply(oddMethod ? errors::wrongMethod : errors::malformedRequest);
    if (oddMethod) {
        reply = recorded(callOf(request), std::move(reply));
    }
    response.status = oddMethod ? reply.status : response.status;
    response.set_content(reply.body, reply.contentType);
    // What could not be parsed may have left bytes that would be taken for the next request.
    response.set_header("Connection", "close");
}

Server::Server(
    const CertificateAuthority& authority, Endpoint endpoint, Resources& resources, Faults& faults)
    : machinery_(std::make_unique<Machinery>(authority, std::move(endpoint), resources, faults)) {}

Server::~Server() {
    stop();
}

void Server::checkPlace(const std::string& address, int port) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
        throw Failure("cannot listen on " + address);
    }
    const int probe = ::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(probe, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const bool free = ::bind(probe, found->ai_addr, found->ai_addrlen) == 0;
    const int reason = errno;
    ::close(probe);
    ::freeaddrinfo(found);
    if (!free) {
        errno = reason;
        failToListen(address, port);
    }
}

void Server::start() {
    Machinery& m = *machinery_;
    if (!m.http.bind_to_port(m.endpoint.address, m.endpoint.port)) {
        failToListen(m.endpoint.address, m.endpoint.port);
    }
    // The library listens with a backlog of 5; a second listen() only sets a longer one.
    ::listen(m.listener, backlog);
    m.thread = std::thread([&m] { m.http.listen_after_bind(); });
    while (!m.http.is_running()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void Server::stop() {
    Machinery& m = *machinery_;
    if (!m.thread.joinable()) {
        return;
    }
    m.interruption.interrupt();
    m.http.stop();
    m.connections.endIdle();
    for (auto waited = betweenLooks; m.connections.busy() > 0 && waited <= longestAnswer;
         waited += betweenLooks) {
        std::this_thread::sleep_for(betweenLooks);
    }
    std::promise<void> ended;
    std::thread hurry([&m, &ended] {
        const auto inTime = ended.get_future().wait_for(longestEnding);
        if (inTime == std::future_status::timeout) {
            m.connections.endAll();
        }
    });
    m.thread.join();
    ended.set_value();
    hurry.join();
}

}  // namespace devserver
