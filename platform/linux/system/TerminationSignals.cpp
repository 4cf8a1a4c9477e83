// SPDX-License-Identifier: MIT

#include "platform/linux/system/TerminationSignals.h"

#include <sys/eventfd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr std::array handledSignals = {SIGTERM, SIGINT, SIGHUP};

// A signal handler reaches static data only.
std::atomic<int> arrivalsNumber = -1;

extern "C" void noteSignal(int) {
    const int savedError = errno;
    const std::uint64_t one = 1;
    // The write fails only when the counter is full, and then the loop is woken already.
    [[maybe_unused]] const ssize_t written = write(arrivalsNumber.load(), &one, sizeof one);
    errno = savedError;
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
    : arrivals_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    std::signal(SIGPIPE, SIG_IGN);
    if (!arrivals_) {
        // The signals keep their default action and end the process.
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(arrivals_.number(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [number = arrivals_.number(), onSignal = std::move(onSignal)] {
                         eventfd_t count = 0;
                         eventfd_read(number, &count);
                         onSignal();
                     });
    arrivalsNumber.store(arrivals_.number());
    for (const int signal : handledSignals) {
        struct sigaction present {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler != SIG_IGN) {
            struct sigaction action {};
            action.sa_handler = noteSignal;
            action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
            sigaction(signal, &action, nullptr);
        }
    }
}

TerminationSignals::~TerminationSignals() {
    for (const int signal : handledSignals) {
        struct sigaction present {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler == noteSignal) {
            std::signal(signal, SIG_DFL);
        }
    }
}

}  // namespace tarvik::linuxdesktop
