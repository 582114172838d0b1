#pragma once

#include <mutex>
#include <set>

typedef struct ssl_st SSL;
typedef struct ssl_ctx_st SSL_CTX;

namespace devserver {

/// The TLS connections that are open, so that a stop need not wait for idle ones. The HTTP
/// library has no list of its own.
class Connections {
public:
    Connections() = default;
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    /// Follows the connections of a context from now on; must outlive them.
    void watch(SSL_CTX* context);

    /// Ends reading on every connection, also on those still to come: idle ones close, requests
    /// that were read to their end are answered.
    void endReading();
    /// Ends every connection.
    void endAll();

    void add(SSL* connection);
    void remove(SSL* connection);

private:
    void shutDown(int how);

    std::mutex mutex_;
    std::set<SSL*> open_;
    bool ended_ = false;
};

}  // namespace devserver
