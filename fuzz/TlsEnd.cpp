// SPDX-License-Identifier: MIT

#include "fuzz/TlsEnd.h"

#include <openssl/err.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace tarvik::fuzz {

namespace {

constexpr time_t timeoutSeconds = 100;

}  // namespace

TlsEnd::TlsEnd(int socket, SSL_CTX* context) : socket_(socket), tls_(SSL_new(context)) {
    std::signal(SIGPIPE, SIG_IGN);
    const timeval timeout{timeoutSeconds, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    SSL_set_fd(tls_.get(), socket);
}

bool TlsEnd::write(std::string_view bytes) {
    ERR_clear_error();
    return bytes.empty() || SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
}

void TlsEnd::endWriting() {
    ERR_clear_error();
    SSL_shutdown(tls_.get());
    shutdown(socket_.number(), SHUT_WR);
}

int TlsEnd::readSome(char* bytes, int size) {
    ERR_clear_error();
    errno = 0;
    const int count = SSL_read(tls_.get(), bytes, size);
    hasTimedOut_ = hasTimedOut_ || (count <= 0 && (errno == EAGAIN || errno == EWOULDBLOCK));
    return count;
}

std::string TlsEnd::readUntil(std::string_view end) {
    std::string bytes;
    char byte = 0;
    while (!bytes.ends_with(end) && readSome(&byte, 1) > 0) {
        bytes += byte;
    }
    return bytes;
}

std::string TlsEnd::readAll() {
    std::string bytes;
    std::array<char, 16384> part{};
    int count = 0;
    while ((count = readSome(part.data(), static_cast<int>(part.size()))) > 0) {
        bytes.append(part.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

}  // namespace tarvik::fuzz
