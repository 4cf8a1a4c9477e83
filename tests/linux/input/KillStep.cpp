// SPDX-License-Identifier: MIT

#include "tests/linux/input/KillStep.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace tarvik::tests {

namespace {

std::atomic<int> stepsLeft = 0;
std::atomic<bool> countsMessages = false;

void step() {
    if (stepsLeft > 0 && --stepsLeft == 0) {
        kill(getpid(), SIGKILL);
    }
}

}  // namespace

void killBeforeStep(int number, Steps steps) {
    countsMessages = steps == Steps::filesAndMessages;
    stepsLeft = number;
}

}  // namespace tarvik::tests

// In the place of the C library's, also for the libraries of the process.
extern "C" {

int rename(const char* from, const char* to) noexcept {
    tarvik::tests::step();
    return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

int unlink(const char* path) noexcept {
    tarvik::tests::step();
    return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

ssize_t sendmsg(int socket, const msghdr* message, int flags) {
    if (tarvik::tests::countsMessages) {
        tarvik::tests::step();
    }
    return syscall(SYS_sendmsg, socket, message, flags);
}
}
