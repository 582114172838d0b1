#include "support/TlsScriptServer.h"

#include "devserver/OpenSsl.h"

#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <csignal>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace support {
namespace {

using devserver::Owned;

void require(bool condition, const char* step) {
    if (!condition) {
        throw std::runtime_error(std::string("TLS test server: ") + step);
    }
}

void useIdentity(SSL_CTX* context, const devserver::Identity& identity) {
    const Owned<X509> certificate = devserver::certificateFrom(identity.certificatePem);
    const Owned<EVP_PKEY> key = devserver::keyFrom(identity.privateKeyPem);
    require(SSL_CTX_use_certificate(context, certificate.get()) == 1, "certificate");
    require(SSL_CTX_use_PrivateKey(context, key.get()) == 1, "private key");
}

void demandClient(SSL_CTX* context, const std::string& authority) {
    if (authority.empty()) {
        return;
    }
    const Owned<X509> certificate = devserver::certificateFrom(authority);
    require(
        X509_STORE_add_cert(SSL_CTX_get_cert_store(context), certificate.get()) == 1,
        "authority for clients");
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
}

SSL_CTX* makeContext(const TlsServerSettings& settings) {
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    require(context != nullptr, "context");
    // Old protocol versions need the lowest security level.
    require(SSL_CTX_set_cipher_list(context, "DEFAULT:@SECLEVEL=0") == 1, "ciphers");
    SSL_CTX_set_min_proto_version(context, settings.lowestVersion);
    SSL_CTX_set_max_proto_version(context, settings.highestVersion);
    static constexpr std::array<unsigned char, 4> sessions{'t', 'e', 's', 't'};
    SSL_CTX_set_session_id_context(context, sessions.data(), sessions.size());
    useIdentity(context, settings.identity);
    demandClient(context, settings.clientAuthority);
    return context;
}

/// A write to a connection that the client has closed must fail, not end the process; only for the
/// thread that calls.
void blockSigpipe() {
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
}

/// Ends the server's side and takes what the client still sends: closing with unread bytes would
/// reset the connection and could swallow what was sent last.
void finishSending(int socket) {
    std::array<char, 4096> rest{};
    shutdown(socket, SHUT_WR);
    while (read(socket, rest.data(), rest.size()) > 0) {
    }
}

/// On Linux this resets an established connection and leaves the descriptor open (connect(2)).
void resetConnection(int socket) {
    sockaddr none{};
    none.sa_family = AF_UNSPEC;
    static_cast<void>(connect(socket, &none, sizeof none));
}

bool readMore(SSL* tls, std::string& text) {
    std::array<char, 16384> piece{};
    const int count = SSL_read(tls, piece.data(), piece.size());
    if (count > 0) {
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

std::size_t contentLength(const std::string& head) {
    constexpr std::string_view field = "\r\nContent-Length: ";
    std::size_t length = 0;
    const std::size_t found = head.find(field);
    if (found != std::string::npos) {
        std::from_chars(head.data() + found + field.size(), head.data() + head.size(), length);
    }
    return length;
}

/// Reads one whole request; false when the connection ends first.
bool readRequest(SSL* tls, std::string& request) {
    std::size_t end = std::string::npos;
    while ((end = request.find("\r\n\r\n")) == std::string::npos) {
        if (!readMore(tls, request)) {
            return false;
        }
    }
    const std::size_t whole = end + 4 + contentLength(request.substr(0, end));
    while (request.size() < whole) {
        if (!readMore(tls, request)) {
            return false;
        }
    }
    return true;
}

bool writeAll(SSL* tls, const std::string& bytes) {
    std::size_t written = 0;
    return bytes.empty() || SSL_write_ex(tls, bytes.data(), bytes.size(), &written) == 1;
}

/// Asks the client for new keys, which come with what it sends next.
void renewKeys(SSL* tls) {
    if (SSL_version(tls) == TLS1_3_VERSION) {
        SSL_key_update(tls, SSL_KEY_UPDATE_REQUESTED);
    } else {
        SSL_renegotiate(tls);
    }
    SSL_do_handshake(tls);
}

socklen_t fillAddress(const std::string& address, sockaddr_storage& storage) {
    auto* four = reinterpret_cast<sockaddr_in*>(&storage);
    if (inet_pton(AF_INET, address.c_str(), &four->sin_addr) == 1) {
        four->sin_family = AF_INET;
        return sizeof *four;
    }
    auto* six = reinterpret_cast<sockaddr_in6*>(&storage);
    require(inet_pton(AF_INET6, address.c_str(), &six->sin6_addr) == 1, "address");
    six->sin6_family = AF_INET6;
    return sizeof *six;
}

int boundPort(int listener) {
    sockaddr_storage storage{};
    socklen_t length = sizeof storage;
    require(getsockname(listener, reinterpret_cast<sockaddr*>(&storage), &length) == 0, "own port");
    // The port stands at the same place in both families.
    return ntohs(reinterpret_cast<sockaddr_in*>(&storage)->sin_port);
}

}  // namespace

TlsScriptServer::TlsScriptServer(TlsServerSettings settings, std::vector<ScriptedReply> replies)
    : settings_(std::move(settings)), replies_(std::move(replies)),
      context_(settings_.handshake ? makeContext(settings_) : nullptr) {
    listen();
    accepter_ = std::thread([this] { acceptAll(); });
}

TlsScriptServer::~TlsScriptServer() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        for (const Connection& connection : connections_) {
            shutdown(connection.socket, SHUT_RDWR);
        }
    }
    changed_.notify_all();
    shutdown(listener_, SHUT_RDWR);
    accepter_.join();
    for (Connection& connection : connections_) {
        connection.thread.join();
        close(connection.socket);
    }
    close(listener_);
}

void TlsScriptServer::listen() {
    sockaddr_storage storage{};
    const socklen_t length = fillAddress(settings_.address, storage);
    listener_ = socket(storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(listener_ >= 0, "socket");
    const auto* address = reinterpret_cast<const sockaddr*>(&storage);
    require(bind(listener_, address, length) == 0 && ::listen(listener_, 16) == 0, "listen");
    port_ = boundPort(listener_);
}

void TlsScriptServer::acceptAll() {
    for (;;) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex_);
        if (socket < 0 || ending_) {
            if (socket >= 0) {
                close(socket);
            }
            return;
        }
        connections_.push_back({socket, std::thread([this, socket] { serve(socket); })});
    }
}

void TlsScriptServer::serve(int socket) {
    blockSigpipe();
    if (!settings_.handshake) {
        waitForEnd();
        return;
    }
    const Owned<SSL> tls(SSL_new(context_.get()));
    SSL_set_fd(tls.get(), socket);
    if (SSL_accept(tls.get()) == 1) {
        recordHandshake(tls.get());
        talk(tls.get(), socket);
    } else {
        finishSending(socket);
    }
    SSL_set_quiet_shutdown(tls.get(), 1);
}

void TlsScriptServer::talk(SSL* tls, int socket) {
    for (;;) {
        std::string request;
        if (!readRequest(tls, request)) {
            finishSending(socket);
            return;
        }
        if (!answer(tls, socket, recordRequest(request))) {
            return;
        }
    }
}

bool TlsScriptServer::answer(SSL* tls, int socket, const ScriptedReply& reply) {
    if (reply.afterNewKeys) {
        renewKeys(tls);
    }
    writeAll(tls, reply.bytes);
    switch (reply.ending) {
    case Ending::keep:
        return true;
    case Ending::closeNotify:
        SSL_shutdown(tls);
        [[fallthrough]];
    case Ending::drop:
        shutdown(socket, SHUT_WR);
        break;
    case Ending::reset:
        resetConnection(socket);
        break;
    case Ending::stall:
        waitForEnd();
        return false;
    }
    recordEnding();
    finishSending(socket);
    return false;
}

void TlsScriptServer::recordHandshake(SSL* tls) {
    const Owned<X509> client(SSL_get1_peer_certificate(tls));
    std::array<char, 256> name{};
    if (client != nullptr) {
        X509_NAME_get_text_by_NID(
            X509_get_subject_name(client.get()), NID_commonName, name.data(), name.size());
    }
    const std::lock_guard lock(mutex_);
    ++handshakes_;
    clientName_ = name.data();
}

ScriptedReply TlsScriptServer::recordRequest(const std::string& request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    return used_ < replies_.size() ? replies_[used_++] : ScriptedReply{"", Ending::drop};
}

void TlsScriptServer::recordEnding() {
    const std::lock_guard lock(mutex_);
    ++endings_;
    changed_.notify_all();
}

void TlsScriptServer::waitForEndings(int count) const {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this, count] { return endings_ >= count; });
}

void TlsScriptServer::waitForEnd() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return ending_; });
}

std::vector<std::string> TlsScriptServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

int TlsScriptServer::connections() const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(connections_.size());
}

int TlsScriptServer::handshakes() const {
    const std::lock_guard lock(mutex_);
    return handshakes_;
}

std::string TlsScriptServer::clientName() const {
    const std::lock_guard lock(mutex_);
    return clientName_;
}

}  // namespace support
