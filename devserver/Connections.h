#pragma once

#include <cstddef>
#include <map>
#include <mutex>

using SSL = struct ssl_st;
using SSL_CTX = struct ssl_ctx_st;

namespace devserver {

/// Ends a connection from this side without waiting; its owner frees it.
void shutDown(const SSL* connection);

/// The TLS connections that are open, so that a stop need not wait for idle ones. The HTTP
/// library has no list of its own.
class Connections {
public:
    Connections() = default;
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    /// Follows the connections of a context from now on; must outlive them.
    void watch(SSL_CTX* context);

    /// Ends the connections that no request is being answered on, and those still to come.
    void endIdle();
    /// Ends every connection.
    void endAll();

    /// Says whether a request is being answered on a connection.
    void setBusy(const SSL* connection, bool busy);
    /// The number of connections with a request that is being answered.
    std::size_t busy();

    void add(SSL* connection);
    void remove(const SSL* connection);

private:
    std::mutex mutex_;
    std::map<const SSL*, bool> open_;  ///< with whether it is busy
    bool ended_ = false;
};

}  // namespace devserver
