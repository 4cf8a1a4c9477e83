// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwayConnection.h"

#include <poll.h>
#include <simdjson.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr std::string_view magic = "i3-ipc";
// The magic, the length of the payload and the kind, both in the byte order of the machine.
constexpr std::size_t headSize = magic.size() + 2 * sizeof(std::uint32_t);
constexpr std::uint32_t eventBit = 0x80000000;

std::uint32_t numberAt(std::string_view bytes, std::size_t position) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + position, sizeof number);
    return number;
}

void append(std::string& bytes, std::uint32_t number) {
    std::array<char, sizeof number> raw{};
    std::memcpy(raw.data(), &number, sizeof number);
    bytes.append(raw.data(), raw.size());
}

}  // namespace

Result<std::unique_ptr<SwayConnection>> SwayConnection::open() {
    const std::string path = socketPath().string();
    if (path.empty()) {
        return Error{ENOENT, "SWAYSOCK is not set"};
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return Error{ENAMETOOLONG, "SWAYSOCK is too long"};
    }
    std::strcpy(address.sun_path, path.c_str());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket || connect(socket.number(), reinterpret_cast<const sockaddr*>(&address),
                           sizeof address) != 0) {
        const int number = errno;
        return Error{number,
                     "nobody answers at " + path + ": " + std::generic_category().message(number)};
    }
    return std::unique_ptr<SwayConnection>(new SwayConnection(std::move(socket)));
}

std::filesystem::path SwayConnection::socketPath() {
    const char* path = std::getenv("SWAYSOCK");
    return path != nullptr ? path : "";
}

void SwayConnection::attach(EventLoop& loop, OnEvent onEvent, std::function<void()> onLost) {
    onEvent_ = std::move(onEvent);
    onLost_ = std::move(onLost);
    watch_ = loop.watch(socket_.number(), POLLIN, [this] { handleReady(); });
}

void SwayConnection::request(Request kind, std::string_view payload, OnReply onReply) {
    output_ += magic;
    append(output_, static_cast<std::uint32_t>(payload.size()));
    append(output_, static_cast<std::uint32_t>(kind));
    output_ += payload;
    awaited_.push_back(std::move(onReply));
    if (watch_ && !write()) {
        // The loop finds the end of the connection as well, and reports it in a turn of its own.
        watch_->setEvents(POLLIN);
    }
}

void SwayConnection::handleReady() {
    if (!read() || !write()) {
        lose();
    }
}

bool SwayConnection::read() {
    std::array<char, 65536> buffer;
    const ssize_t length = recv(socket_.number(), buffer.data(), buffer.size(), 0);
    if (length <= 0) {
        return length < 0 && (errno == EAGAIN || errno == EINTR);
    }
    input_.append(buffer.data(), static_cast<std::size_t>(length));
    while (input_.size() >= headSize) {
        const std::size_t size = numberAt(input_, magic.size());
        if (!input_.starts_with(magic)) {
            return false;
        }
        if (input_.size() < headSize + size) {
            break;
        }
        const std::uint32_t kind = numberAt(input_, magic.size() + sizeof(std::uint32_t));
        const std::string json = input_.substr(headSize, size);
        input_.erase(0, headSize + size);
        handle(kind, json);
    }
    return true;
}

void SwayConnection::handle(std::uint32_t kind, std::string_view json) {
    if ((kind & eventBit) != 0) {
        onEvent_(static_cast<Event>(kind), json);
    } else if (!awaited_.empty()) {
        const OnReply onReply = std::move(awaited_.front());
        awaited_.pop_front();
        if (onReply) {
            onReply(json);
        }
    }
}

bool SwayConnection::write() {
    while (!output_.empty()) {
        const ssize_t length = send(socket_.number(), output_.data(), output_.size(), MSG_NOSIGNAL);
        if (length < 0 && errno == EAGAIN) {
            break;
        }
        if (length < 0 && errno != EINTR) {
            return false;
        }
        output_.erase(0, length < 0 ? 0 : static_cast<std::size_t>(length));
    }
    watch_->setEvents(output_.empty() ? POLLIN : POLLIN | POLLOUT);
    return true;
}

void SwayConnection::lose() {
    watch_.reset();
    onLost_();
}

std::string changeIn(std::string_view event) {
    simdjson::dom::parser parser;
    std::string_view change;
    const auto error = parser.parse(event.data(), event.size())["change"].get(change);
    return error == simdjson::SUCCESS ? std::string(change) : "";
}

}  // namespace tarvik::linuxdesktop
