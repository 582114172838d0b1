#include "devserver/Connections.h"

#include <openssl/ssl.h>

#include <sys/socket.h>

#include <algorithm>

namespace devserver {

namespace {

/// Where a TLS connection keeps the registry that follows it.
int registryIndex() {
    static const int index = SSL_get_ex_new_index(
        0, nullptr, nullptr, nullptr,
        [](void* connection, void* registry, CRYPTO_EX_DATA*, int, long, void*) {
            if (registry != nullptr) {
                static_cast<Connections*>(registry)->remove(static_cast<SSL*>(connection));
            }
        });
    return index;
}

int contextIndex() {
    static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

void onState(const SSL* connection, int where, int) {
    if ((where & SSL_CB_HANDSHAKE_START) == 0) {
        return;
    }
    auto* registry =
        static_cast<Connections*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), contextIndex()));
    // The callback's parameter is const although it is the very object the server made.
    registry->add(const_cast<SSL*>(connection));
}

}  // namespace

void shutDown(const SSL* connection) {
    ::shutdown(SSL_get_fd(connection), SHUT_RDWR);
}

void Connections::watch(SSL_CTX* context) {
    registryIndex();
    SSL_CTX_set_ex_data(context, contextIndex(), this);
    SSL_CTX_set_info_callback(context, onState);
}

void Connections::endIdle() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    for (const auto& [connection, busy] : open_) {
        if (!busy) {
            shutDown(connection);
        }
    }
}

void Connections::endAll() {
    const std::lock_guard lock(mutex_);
    for (const auto& [connection, busy] : open_) {
        shutDown(connection);
    }
}

void Connections::setBusy(const SSL* connection, bool busy) {
    const std::lock_guard lock(mutex_);
    const auto entry = open_.find(connection);
    if (entry != open_.end()) {
        entry->second = busy;
    }
}

std::size_t Connections::busy() {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(
        std::count_if(open_.begin(), open_.end(), [](const auto& entry) { return entry.second; }));
}

void Connections::add(SSL* connection) {
    const std::lock_guard lock(mutex_);
    SSL_set_ex_data(connection, registryIndex(), this);
    open_.emplace(connection, false);
    if (ended_) {
        shutDown(connection);
    }
}

void Connections::remove(const SSL* connection) {
    const std::lock_guard lock(mutex_);
    open_.erase(connection);
}

}  // namespace devserver
