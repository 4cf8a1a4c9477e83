// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/Peer.h"

#include <openssl/evp.h>
#include <openssl/sha.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace tarvik::tests {

namespace {

void setTimeout(int socket, int direction, double seconds) {
    timeval timeout{};
    timeout.tv_sec = static_cast<time_t>(seconds);
    timeout.tv_usec =
        static_cast<suseconds_t>((seconds - static_cast<double>(timeout.tv_sec)) * 1e6);
    ::setsockopt(socket, SOL_SOCKET, direction, &timeout, sizeof timeout);
}

void appendNumber(std::string& bytes, std::uint64_t number, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(number >> shift & 0xFF));
    }
}

std::uint64_t numberIn(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

std::string headerValue(const std::string& head, const std::string& name) {
    const std::string start = "\r\n" + name + ": ";
    const auto at = head.find(start);
    if (at == std::string::npos) {
        throw std::runtime_error("The request has no " + name);
    }
    const auto from = at + start.size();
    return head.substr(from, head.find("\r\n", from) - from);
}

}  // namespace

int Peer::Frame::closeCode() const {
    return static_cast<int>(numberIn(std::string_view(payload).substr(0, 2)));
}

Peer::Peer(int socket) : socket_(socket) {
    setTimeout(socket_, SO_RCVTIMEO, 10);
    setTimeout(socket_, SO_SNDTIMEO, 10);
}

Peer::Peer(Peer&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)), tls_(std::exchange(other.tls_, nullptr)) {}

Peer::~Peer() {
    end();
}

bool Peer::startTls(SSL_CTX* context) {
    tls_ = SSL_new(context);
    SSL_set_fd(tls_, socket_);
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
    const long count = tls_ != nullptr ? SSL_read(tls_, bytes, static_cast<int>(size))
                                       : ::recv(socket_, bytes, size, 0);
    if (count <= 0 && errno == EAGAIN) {
        throw std::runtime_error("The client sent nothing");
    }
    return count;
}

bool Peer::readExactly(void* bytes, std::size_t size) {
    auto* target = static_cast<char*>(bytes);
    while (size > 0) {
        errno = 0;
        const long count = readSome(target, size);
        if (count <= 0) {
            return false;
        }
        target += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::string Peer::readHead() {
    std::string head;
    char byte = 0;
    while (!head.ends_with("\r\n\r\n")) {
        if (!readExactly(&byte, 1)) {
            return {};
        }
        head.push_back(byte);
    }
    return head;
}

std::string Peer::upgradeResponse(const std::string& head, const std::string& protocol) {
    const std::string proof =
        headerValue(head, "Sec-WebSocket-Key") + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    std::array<unsigned char, SHA_DIGEST_LENGTH> digest{};
    SHA1(reinterpret_cast<const unsigned char*>(proof.data()), proof.size(), digest.data());
    std::array<unsigned char, 32> encoded{};
    const int length = EVP_EncodeBlock(encoded.data(), digest.data(), SHA_DIGEST_LENGTH);
    std::string answer =
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Accept: " +
        std::string(encoded.begin(), encoded.begin() + length) + "\r\n";
    if (!protocol.empty()) {
        answer += "Sec-WebSocket-Protocol: " + protocol + "\r\n";
    }
    return answer + "\r\n";
}

void Peer::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const long count = tls_ != nullptr
                               ? SSL_write(tls_, bytes.data(), static_cast<int>(bytes.size()))
                               : ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            throw std::runtime_error("The client takes nothing");
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

bool Peer::tryWrite(std::string_view bytes) {
    setTimeout(socket_, SO_SNDTIMEO, 0.5);
    SSL_set_mode(tls_, SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    const int count = SSL_write(tls_, bytes.data(), static_cast<int>(bytes.size()));
    const bool isStuck = count <= 0 && SSL_get_error(tls_, count) == SSL_ERROR_WANT_WRITE;
    if (count <= 0 && !isStuck) {
        throw std::runtime_error("The client has gone");
    }
    setTimeout(socket_, SO_SNDTIMEO, 10);
    return !isStuck;
}

std::string Peer::frame(int opcode, std::string_view payload, std::uint8_t flags) {
    std::string bytes;
    bytes.push_back(static_cast<char>(flags | opcode));
    if (payload.size() < 126) {
        bytes.push_back(static_cast<char>(payload.size()));
    } else if (payload.size() <= 0xFFFF) {
        bytes.push_back(126);
        appendNumber(bytes, payload.size(), 2);
    } else {
        bytes.push_back(127);
        appendNumber(bytes, payload.size(), 8);
    }
    return bytes.append(payload);
}

std::string Peer::closeFrame(int code, std::string_view reason) {
    std::string payload;
    appendNumber(payload, static_cast<std::uint64_t>(code), 2);
    return frame(close, payload.append(reason));
}

std::optional<Peer::Frame> Peer::readFrame() {
    std::array<unsigned char, 2> start{};
    if (!readExactly(start.data(), start.size())) {
        return std::nullopt;
    }
    Frame frame;
    frame.opcode = start[0] & 0x0F;
    frame.isMasked = (start[1] & 0x80) != 0;
    std::uint64_t length = start[1] & 0x7F;
    if (length >= 126) {
        std::string longLength(length == 126 ? 2 : 8, '\0');
        if (!readExactly(longLength.data(), longLength.size())) {
            return std::nullopt;
        }
        length = numberIn(longLength);
    }
    std::array<char, 4> mask{};
    frame.payload.resize(length);
    if ((frame.isMasked && !readExactly(mask.data(), mask.size())) ||
        !readExactly(frame.payload.data(), frame.payload.size())) {
        return std::nullopt;
    }
    for (std::size_t index = 0; index < frame.payload.size(); ++index) {
        frame.payload[index] = static_cast<char>(frame.payload[index] ^ mask[index % 4]);
    }
    return frame;
}

void Peer::end() {
    if (tls_ != nullptr) {
        SSL_shutdown(tls_);
        SSL_free(std::exchange(tls_, nullptr));
    }
    if (socket_ >= 0) {
        ::close(std::exchange(socket_, -1));
    }
}

void Peer::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    if (tls_ != nullptr) {
        SSL_free(std::exchange(tls_, nullptr));
    }
    ::close(std::exchange(socket_, -1));
}

}  // namespace tarvik::tests
