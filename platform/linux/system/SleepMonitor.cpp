// SPDX-License-Identifier: MIT

#include "platform/linux/system/SleepMonitor.h"

#include <chrono>
#include <string>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr int maxAttempts = 6;
constexpr std::chrono::milliseconds firstRetryInterval{50};

}  // namespace

SleepMonitor::SleepMonitor(const platform::Clock& clock, platform::Log& log,
                           std::function<void()> onWake)
    : log_(log), onWake_(std::move(onWake)), loop_(clock) {
    connect();
}

void SleepMonitor::connect() {
    auto opened = MessageBus::openSystem();
    if (!opened) {
        onLost(opened.error());
        return;
    }
    systemBus_ = std::move(opened).value();
    systemBus_->attach(loop_, [this](const Error& error) { onLost(error); });
    systemBus_->observe(
        "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
        "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
        [this](sd_bus_message* message) {
            int isGoingToSleep = 0;
            if (sd_bus_message_read(message, "b", &isGoingToSleep) > 0 && isGoingToSleep == 0) {
                onWake_();
            }
        },
        [this] { onObserving(); });
}

void SleepMonitor::onObserving() {
    isLossKnown_ = false;
    attempts_ = 0;
    socket_.reset();
}

void SleepMonitor::onLost(const Error& error) {
    systemBus_.reset();
    if (!std::exchange(isLossKnown_, true)) {
        log_.write("TarvikDictate: waking from sleep goes unnoticed, there is no system bus: " +
                   error.localizedDescription);
    }
    if (const std::optional<std::string> path = systemBusSocket(); path && !socket_) {
        socket_.emplace(*path, [this] {
            attempts_ = 0;
            retry();
        });
    }
    retry();
}

void SleepMonitor::retry() {
    if (attempts_ < maxAttempts) {
        retryDeadline_.set(firstRetryInterval * (1 << attempts_++), [this] { connect(); });
    }
}

}  // namespace tarvik::linuxdesktop
