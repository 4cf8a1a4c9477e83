// SPDX-License-Identifier: MIT

// The command of a custom shortcut, which GNOME starts at a press and at each repeat of the key.
// Tells the application in one datagram, and ends. The arguments are the path of the application's
// socket and the word of the hotkey.

#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/linux/gnome/ShortcutPress.h"

int main(int argc, char** argv) {
    using namespace tarvik::linuxdesktop;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (argc != 3 || std::strlen(argv[1]) >= sizeof address.sun_path) {
        return EXIT_FAILURE;
    }
    std::strcpy(address.sun_path, argv[1]);
    const ShortcutPress press{std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec,
                              std::strcmp(argv[2], toggleWord) == 0 ? 1U : 0U};
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    // An application that hangs must not gather processes that wait.
    const ssize_t sent = sendto(socket, &press, sizeof press, MSG_NOSIGNAL | MSG_DONTWAIT,
                                reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent == sizeof press ? EXIT_SUCCESS : EXIT_FAILURE;
}
