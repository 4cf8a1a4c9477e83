// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/InputMethodSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace tarvik::linuxdesktop {

InputMethodSocket::InputMethodSocket(std::string path, EventLoop& loop, OnConnection onConnection)
    : path_(std::move(path)), loop_(loop), onConnection_(std::move(onConnection)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof address.sun_path) {
        return;
    }
    path_.copy(address.sun_path, path_.size());
    unlink(path_.c_str());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket &&
        bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        chmod(path_.c_str(), S_IRUSR | S_IWUSR) == 0 && listen(socket.number(), 1) == 0) {
        socket_ = std::move(socket);
        watch_ = loop.watch(socket_.number(), POLLIN, [this] { accept(); });
    }
}

InputMethodSocket::~InputMethodSocket() {
    if (socket_) {
        unlink(path_.c_str());
    }
}

void InputMethodSocket::accept() {
    FileDescriptor helper(
        ::accept4(socket_.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (helper) {
        helperWatch_.reset();
        helper_ = std::move(helper);
        helperWatch_ = loop_.watch(helper_.number(), POLLIN, [this] { receive(); });
    }
}

void InputMethodSocket::receive() {
    char byte = 0;
    iovec content{&byte, 1};
    int descriptor = -1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    // The helper sends once. What follows is its end.
    helperWatch_.reset();
    if (recvmsg(helper_.number(), &message, MSG_CMSG_CLOEXEC) != 1) {
        return;
    }
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header != nullptr && header->cmsg_type == SCM_RIGHTS) {
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
        onConnection_(FileDescriptor(descriptor));
    }
}

}  // namespace tarvik::linuxdesktop
