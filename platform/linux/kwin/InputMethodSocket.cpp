// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/InputMethodSocket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cstring>
#include <utility>

namespace tarvik::linuxdesktop {

InputMethodSocket::InputMethodSocket(std::string path, EventLoop& loop, OnConnection onConnection)
    : loop_(loop), onConnection_(std::move(onConnection)), socket_(std::move(path), SOCK_STREAM) {
    if (socket_.isOpen()) {
        watch_ = loop.watch(socket_.number(), POLLIN, [this] { accept(); });
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
