#pragma once

#include "devserver/CertificateAuthority.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <openssl/ssl.h>
#include <string>
#include <thread>
#include <vector>

namespace support {

/// What a server does with the connection once the bytes of a reply are out.
enum class Ending {
    keep,         ///< waits for the next request
    closeNotify,  ///< ends TLS in order, then the connection
    drop,         ///< ends the connection without ending TLS
    reset,        ///< resets the connection
    stall         ///< does nothing more until the server ends
};

/// Raw reply bytes, sent for one request whatever it asks.
struct ScriptedReply {
    std::string bytes;
    Ending ending = Ending::keep;
    bool afterNewKeys = false;  ///< TLS 1.2 renegotiates before, TLS 1.3 updates the keys
};

struct TlsServerSettings {
    devserver::Identity identity;
    std::string address = "127.0.0.1";
    std::string
        clientAuthority;  ///< PEM: a client must have a certificate of it; empty: none asked
    int lowestVersion = TLS1_2_VERSION;
    int highestVersion = TLS1_3_VERSION;
    bool handshake = true;  ///< false: takes connections and says nothing
};

/// A TLS server on a free loopback port whose replies are raw bytes and whose every connection,
/// handshake and request is recorded. The replies are used up in order over all connections; a
/// request beyond the last is recorded and its connection dropped.
class TlsScriptServer {
public:
    TlsScriptServer(TlsServerSettings settings, std::vector<ScriptedReply> replies);
    ~TlsScriptServer();
    TlsScriptServer(const TlsScriptServer&) = delete;
    TlsScriptServer& operator=(const TlsScriptServer&) = delete;

    int port() const { return port_; }

    /// The exact bytes of each request that arrived whole.
    std::vector<std::string> requests() const;

    /// How many TCP connections were made.
    int connections() const;

    /// How many TLS handshakes the server ended successfully.
    int handshakes() const;

    /// Waits until the server has ended this many connections by itself.
    void waitForEndings(int count) const;

    /// The common name of the last client certificate; empty when there was none.
    std::string clientName() const;

private:
    struct ContextRelease {
        void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    };
    struct Connection {
        int socket = -1;
        std::thread thread;
    };

    void listen();
    void acceptAll();
    void serve(int socket);
    void talk(SSL* tls, int socket);
    bool answer(SSL* tls, int socket, const ScriptedReply& reply);
    void recordHandshake(SSL* tls);
    ScriptedReply recordRequest(const std::string& request);
    void recordEnding();
    void waitForEnd();

    TlsServerSettings settings_;
    std::vector<ScriptedReply> replies_;
    std::unique_ptr<SSL_CTX, ContextRelease> context_;
    int listener_ = -1;
    int port_ = 0;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool ending_ = false;
    std::size_t used_ = 0;
    int handshakes_ = 0;
    int endings_ = 0;
    std::string clientName_;
    std::vector<std::string> requests_;
    std::list<Connection> connections_;
    std::thread accepter_;
};

}  // namespace support
