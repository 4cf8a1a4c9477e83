// SPDX-License-Identifier: MIT

#include "platform/linux/loop/LocalSocket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <utility>

namespace tarvik::linuxdesktop {

LocalSocket::LocalSocket(std::string path, int type) : path_(std::move(path)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.empty() || path_.size() >= sizeof address.sun_path) {
        return;
    }
    path_.copy(address.sun_path, path_.size());
    unlink(path_.c_str());
    FileDescriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket &&
        bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        chmod(path_.c_str(), S_IRUSR | S_IWUSR) == 0 &&
        (type != SOCK_STREAM || listen(socket.number(), 1) == 0)) {
        socket_ = std::move(socket);
    }
}

LocalSocket::~LocalSocket() {
    if (isOpen()) {
        unlink(path_.c_str());
    }
}

}  // namespace tarvik::linuxdesktop
