// SPDX-License-Identifier: MIT

#include "speech-service/PassedSockets.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace tarvik::service {

namespace {

constexpr int firstSocket = 3;

std::optional<long> numberIn(const char* variable) {
    const char* text = std::getenv(variable);
    if (!text) {
        return std::nullopt;
    }
    long number = 0;
    const char* end = text + std::strlen(text);
    const auto [parsed, status] = std::from_chars(text, end, number);
    return status == std::errc() && parsed == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::vector<int> takePassedSockets() {
    const std::optional<long> process = numberIn("LISTEN_PID");
    const std::optional<long> count = numberIn("LISTEN_FDS");
    for (const char* variable : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) {
        unsetenv(variable);
    }
    std::vector<int> sockets;
    // The variables may be meant for the parent process.
    if (process == getpid() && count) {
        for (int socket = firstSocket; socket < firstSocket + *count; ++socket) {
            fcntl(socket, F_SETFD, FD_CLOEXEC);
            sockets.push_back(socket);
        }
    }
    return sockets;
}

}  // namespace tarvik::service
