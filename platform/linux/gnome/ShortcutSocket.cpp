// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/ShortcutSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <utility>

namespace tarvik::linuxdesktop {

ShortcutSocket::ShortcutSocket(std::string path, EventLoop& loop, OnPress onPress)
    : path_(std::move(path)), onPress_(std::move(onPress)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.empty() || path_.size() >= sizeof address.sun_path) {
        return;
    }
    path_.copy(address.sun_path, path_.size());
    unlink(path_.c_str());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket &&
        bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        chmod(path_.c_str(), S_IRUSR | S_IWUSR) == 0) {
        socket_ = std::move(socket);
        watch_ = loop.watch(socket_.number(), POLLIN, [this] { receive(); });
    }
}

ShortcutSocket::~ShortcutSocket() {
    if (socket_) {
        unlink(path_.c_str());
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
