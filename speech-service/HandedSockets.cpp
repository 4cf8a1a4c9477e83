// SPDX-License-Identifier: MIT

#include "speech-service/HandedSockets.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tarvik::service {

namespace {

constexpr int firstHandedDescriptor = 3;

// The number in a variable, which is removed; 0 for anything else.
int takeNumber(const char* name) {
    const char* value = std::getenv(name);
    const std::string text = value != nullptr ? value : "";
    unsetenv(name);
    int number = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
    return status == std::errc() && end == text.data() + text.size() ? number : 0;
}

int optionOf(int descriptor, int option) {
    int value = 0;
    socklen_t size = sizeof value;
    return getsockopt(descriptor, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

bool isListeningTcpSocket(int descriptor) {
    const int family = optionOf(descriptor, SO_DOMAIN);
    return (family == AF_INET || family == AF_INET6) &&
           optionOf(descriptor, SO_TYPE) == SOCK_STREAM && optionOf(descriptor, SO_ACCEPTCONN) == 1;
}

}  // namespace

Result<std::vector<int>> takeHandedSockets() {
    const int process = takeNumber("LISTEN_PID");
    const int count = takeNumber("LISTEN_FDS");
    std::vector<int> sockets;
    // The variables may be meant for a process that has started this one.
    if (process != getpid()) {
        return sockets;
    }
    for (int descriptor = firstHandedDescriptor; descriptor < firstHandedDescriptor + count;
         ++descriptor) {
        if (!isListeningTcpSocket(descriptor)) {
            return Error{EXIT_FAILURE, "The descriptor " + std::to_string(descriptor) +
                                           " was handed over and is no listening TCP socket"};
        }
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        sockets.push_back(descriptor);
    }
    return sockets;
}

}  // namespace tarvik::service
