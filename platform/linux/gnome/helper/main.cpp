// SPDX-License-Identifier: MIT

// The command of a custom shortcut, which GNOME starts at a press and at each repeat of the key.
// Tells the application in one datagram, and ends. The arguments are the path of the application's
// socket and the word of the hotkey.

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/linux/gnome/ShortcutPress.h"

namespace {

constexpr std::int64_t second = 1'000'000'000;

std::int64_t now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return time.tv_sec * second + time.tv_nsec;
}

// How much later the clock of /proc is than the monotonic one, to a millisecond. Only a process
// that gets no processor between the readings has to read them again.
std::int64_t clockDifference() {
    constexpr int maxTries = 20;
    std::int64_t difference = 0;
    std::int64_t error = second;
    for (int tries = 0; tries < maxTries && error > second / 1000; ++tries) {
        const std::int64_t before = now(CLOCK_MONOTONIC);
        const std::int64_t sinceBoot = now(CLOCK_BOOTTIME);
        error = now(CLOCK_MONOTONIC) - before;
        difference = sinceBoot - before;
    }
    return difference;
}

// When this process was made; the present time where the system does not tell. A busy machine may
// make the process long before the process runs.
std::int64_t startTime() {
    char text[1024] = {};
    const int file = open("/proc/self/stat", O_RDONLY | O_CLOEXEC);
    if (file < 0 || read(file, text, sizeof text - 1) <= 0) {
        return now(CLOCK_MONOTONIC);
    }
    // The second field is the name in parentheses, and the twenty-second one the start.
    const char* field = std::strrchr(text, ')');
    for (int number = 2; field != nullptr && number < 22; ++number) {
        field = std::strchr(field + 1, ' ');
    }
    if (field == nullptr) {
        return now(CLOCK_MONOTONIC);
    }
    return std::atoll(field) * (second / sysconf(_SC_CLK_TCK)) - clockDifference();
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tarvik::linuxdesktop;
    const std::int64_t start = startTime();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (argc != 3 || std::strlen(argv[1]) >= sizeof address.sun_path) {
        return EXIT_FAILURE;
    }
    std::strcpy(address.sun_path, argv[1]);
    const ShortcutPress press{start, std::strcmp(argv[2], toggleWord) == 0 ? 1U : 0U};
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    // An application that hangs must not gather processes that wait.
    const ssize_t sent = sendto(socket, &press, sizeof press, MSG_NOSIGNAL | MSG_DONTWAIT,
                                reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent == sizeof press ? EXIT_SUCCESS : EXIT_FAILURE;
}
