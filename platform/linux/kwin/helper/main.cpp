// SPDX-License-Identifier: MIT

// The input method that KWin starts. Hands the connection to KWin over to the application, and ends
// with the application or when KWin says so. The only argument is the path of the application's
// socket.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

bool sendDescriptor(int socket, int descriptor) {
    char byte = 0;
    iovec content{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    return sendmsg(socket, &message, MSG_NOSIGNAL) == 1;
}

}  // namespace

int main(int argc, char** argv) {
    const char* wayland = std::getenv("WAYLAND_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (argc != 2 || wayland == nullptr || std::strlen(argv[1]) >= sizeof address.sun_path) {
        return EXIT_FAILURE;
    }
    std::strcpy(address.sun_path, argv[1]);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        !sendDescriptor(socket, std::atoi(wayland))) {
        return EXIT_FAILURE;
    }
    close(std::atoi(wayland));
    // Nothing is ever sent, so that the only news is the end.
    char byte = 0;
    while (read(socket, &byte, 1) > 0) {
    }
    return EXIT_SUCCESS;
}
