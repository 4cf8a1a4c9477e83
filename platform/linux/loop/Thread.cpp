// SPDX-License-Identifier: MIT

#include "platform/linux/loop/Thread.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// Blocks every signal in the calling thread. A new thread inherits the mask, from its first
// instruction on.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t every;
        sigfillset(&every);
        pthread_sigmask(SIG_SETMASK, &every, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_{};
};

}  // namespace

std::thread startThread(const std::string& name, std::function<void()> body) {
    const SignalsBlocked signalsBlocked;
    std::thread thread(std::move(body));
    pthread_setname_np(thread.native_handle(), name.c_str());
    return thread;
}

}  // namespace tarvik::linuxdesktop
