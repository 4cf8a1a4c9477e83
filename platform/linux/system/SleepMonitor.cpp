#include "platform/linux/system/SleepMonitor.h"

#include <cmath>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr int mostAttempts = 6;
constexpr Seconds firstPause(0.05);

}  // namespace

SleepMonitor::SleepMonitor(const platform::Clock& clock, platform::Log& log,
                           std::function<void()> onWake)
    : clock_(clock), log_(log), onWake_(std::move(onWake)), retry_([this] {
          retry_.clear();
          connect();
      }) {
    connect();
}

void SleepMonitor::connect() {
    systemBus_ = std::make_unique<BusConnection>(BusConnection::Bus::system, clock_,
                                                 [this](const Error& error) { lost(error); });
    systemBus_->observeSignal(
        "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
        "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
        [this](sd_bus_message* message) {
            int isGoingToSleep = 0;
            if (sd_bus_message_read(message, "b", &isGoingToSleep) > 0 && isGoingToSleep == 0) {
                onWake_();
            }
        },
        [this] { joined(); });
}

void SleepMonitor::joined() {
    isLossKnown_ = false;
    attempts_ = 0;
    socket_.reset();
}

void SleepMonitor::lost(const Error& error) {
    if (!std::exchange(isLossKnown_, true)) {
        log_.write("TarvikDictate: waking from sleep goes unnoticed, there is no system bus: " +
                   error.localizedDescription);
    }
    if (const std::optional<std::string> path = systemBusSocket(); path && !socket_) {
        socket_.emplace(*path, [this] {
            attempts_ = 0;
            awaitBus();
        });
    }
    awaitBus();
}

void SleepMonitor::awaitBus() {
    if (attempts_ < mostAttempts) {
        retry_.set(clock_.now() + firstPause * std::exp2(attempts_++));
    }
}

}  // namespace tarvik::linuxdesktop
