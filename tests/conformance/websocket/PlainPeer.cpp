// SPDX-License-Identifier: MIT

#include "tests/conformance/websocket/PlainPeer.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <utility>

#include "tests/conformance/websocket/HandshakeProof.h"

namespace tarvik::tests {

namespace {

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

int PlainPeer::Frame::closeCode() const {
    return static_cast<int>(numberIn(std::string_view(payload).substr(0, 2)));
}

PlainPeer::PlainPeer(int socket) : socket_(socket) {
    std::signal(SIGPIPE, SIG_IGN);
    setTimeout(SO_RCVTIMEO, 10);
    setTimeout(SO_SNDTIMEO, 10);
}

PlainPeer::PlainPeer(PlainPeer&& other) noexcept : socket_(std::exchange(other.socket_, -1)) {}

PlainPeer::~PlainPeer() {
    PlainPeer::end();
}

void PlainPeer::setTimeout(int direction, double seconds) {
    timeval timeout{};
    timeout.tv_sec = static_cast<time_t>(seconds);
    timeout.tv_usec =
        static_cast<suseconds_t>((seconds - static_cast<double>(timeout.tv_sec)) * 1e6);
    ::setsockopt(socket_, SOL_SOCKET, direction, &timeout, sizeof timeout);
}

long PlainPeer::readSome(void* bytes, std::size_t size) {
    return ::recv(socket_, bytes, size, 0);
}

long PlainPeer::writeSome(const void* bytes, std::size_t size) {
    return ::send(socket_, bytes, size, 0);
}

bool PlainPeer::readExactly(void* bytes, std::size_t size) {
    auto* target = static_cast<char*>(bytes);
    while (size > 0) {
        errno = 0;
        const long count = readSome(target, size);
        if (count <= 0 && errno == EAGAIN) {
            throw std::runtime_error("The client sent nothing");
        }
        if (count <= 0) {
            return false;
        }
        target += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::string PlainPeer::readHead() {
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

std::string PlainPeer::upgradeResponse(const std::string& head, const std::string& protocol) {
    std::string answer =
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Accept: " +
        handshakeProof(headerValue(head, "Sec-WebSocket-Key")) + "\r\n";
    if (!protocol.empty()) {
        answer += "Sec-WebSocket-Protocol: " + protocol + "\r\n";
    }
    return answer + "\r\n";
}

void PlainPeer::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const long count = writeSome(bytes.data(), bytes.size());
        if (count <= 0) {
            throw std::runtime_error("The client takes nothing");
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::string PlainPeer::frame(int opcode, std::string_view payload, std::uint8_t flags) {
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

std::string PlainPeer::closeFrame(int code, std::string_view reason) {
    std::string payload;
    appendNumber(payload, static_cast<std::uint64_t>(code), 2);
    return frame(close, payload.append(reason));
}

std::optional<PlainPeer::Frame> PlainPeer::readFrame() {
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

void PlainPeer::end() {
    if (socket_ >= 0) {
        ::close(std::exchange(socket_, -1));
    }
}

void PlainPeer::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    ::close(std::exchange(socket_, -1));
}

}  // namespace tarvik::tests
