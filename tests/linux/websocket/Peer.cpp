// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/Peer.h"

#include <sys/socket.h>

#include <stdexcept>
#include <utility>

namespace tarvik::tests {

Peer::Peer(Peer&& other) noexcept
    : PlainPeer(std::move(other)), tls_(std::exchange(other.tls_, nullptr)) {}

Peer::~Peer() {
    Peer::end();
}

bool Peer::startTls(SSL_CTX* context) {
    tls_ = SSL_new(context);
    SSL_set_fd(tls_, descriptor());
    return SSL_accept(tls_) == 1;
}

bool Peer::isResumed() const {
    return SSL_session_reused(tls_) == 1;
}

std::string Peer::serverName() const {
    const char* name = SSL_get_servername(tls_, TLSEXT_NAMETYPE_host_name);
    return name == nullptr ? std::string() : std::string(name);
}

long Peer::readSome(void* bytes, std::size_t size) {
    return tls_ != nullptr ? SSL_read(tls_, bytes, static_cast<int>(size))
                           : PlainPeer::readSome(bytes, size);
}

long Peer::writeSome(const void* bytes, std::size_t size) {
    return tls_ != nullptr ? SSL_write(tls_, bytes, static_cast<int>(size))
                           : PlainPeer::writeSome(bytes, size);
}

bool Peer::tryWrite(std::string_view bytes) {
    setTimeout(SO_SNDTIMEO, 0.5);
    SSL_set_mode(tls_, SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    const int count = SSL_write(tls_, bytes.data(), static_cast<int>(bytes.size()));
    const bool isStuck = count <= 0 && SSL_get_error(tls_, count) == SSL_ERROR_WANT_WRITE;
    if (count <= 0 && !isStuck) {
        throw std::runtime_error("The client has gone");
    }
    setTimeout(SO_SNDTIMEO, 10);
    return !isStuck;
}

void Peer::end() {
    if (tls_ != nullptr) {
        SSL_shutdown(tls_);
        SSL_free(std::exchange(tls_, nullptr));
    }
    PlainPeer::end();
}

void Peer::reset() {
    if (tls_ != nullptr) {
        SSL_free(std::exchange(tls_, nullptr));
    }
    PlainPeer::reset();
}

}  // namespace tarvik::tests
