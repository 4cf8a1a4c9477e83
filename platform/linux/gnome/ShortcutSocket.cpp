// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/ShortcutSocket.h"

#include <poll.h>
#include <sys/socket.h>

#include <utility>

namespace tarvik::linuxdesktop {

ShortcutSocket::ShortcutSocket(std::string path, EventLoop& loop, OnPress onPress)
    : onPress_(std::move(onPress)), socket_(std::move(path), SOCK_DGRAM) {
    if (socket_.isOpen()) {
        watch_ = loop.watch(socket_.number(), POLLIN, [this] { receive(); });
    }
}

void ShortcutSocket::receive() {
    ShortcutPress press;
    ssize_t length = 0;
    while ((length = recv(socket_.number(), &press, sizeof press, MSG_TRUNC)) >= 0) {
        // Whatever else the user's programs may send is no press.
        if (length == sizeof press) {
            onPress_(press);
        }
    }
}

}  // namespace tarvik::linuxdesktop
