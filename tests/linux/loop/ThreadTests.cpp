// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <csignal>
#include <string>

#include "platform/linux/loop/Thread.h"

namespace tarvik::tests {

namespace {

bool isBlockedHere(int signal) {
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, signal) == 1;
}

TEST(Thread, ReceivesNoSignalsWhileItsStarterStillDoes) {
    bool isBlocked = false;
    linuxdesktop::startThread("test", [&] { isBlocked = isBlockedHere(SIGTERM); }).join();
    EXPECT_TRUE(isBlocked);
    EXPECT_FALSE(isBlockedHere(SIGTERM));
}

TEST(Thread, HasTheNameThatItIsGiven) {
    std::array<char, 16> name{};
    sigset_t wakeUp;
    sigemptyset(&wakeUp);
    sigaddset(&wakeUp, SIGUSR1);
    // The name is set from outside, so the thread waits until its starter goes on.
    std::thread thread = linuxdesktop::startThread("a name", [&] {
        int signal = 0;
        sigwait(&wakeUp, &signal);
    });
    EXPECT_EQ(pthread_getname_np(thread.native_handle(), name.data(), name.size()), 0);
    EXPECT_STREQ(name.data(), "a name");
    pthread_kill(thread.native_handle(), SIGUSR1);
    thread.join();
}

}  // namespace

}  // namespace tarvik::tests
