// SPDX-License-Identifier: MIT

#include "tests/linux/bus/BusServer.h"

#include <poll.h>

#include <stdexcept>

namespace tarvik::tests {

namespace {

constexpr int pollMilliseconds = 20;

}  // namespace

BusServer::BusServer() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) {
        throw std::runtime_error("no session bus");
    }
    bus_.reset(opened);
}

BusServer::~BusServer() {
    hasEnded_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
}

void BusServer::start() {
    thread_ = std::thread([this] { serve(); });
}

void BusServer::serve() {
    while (!hasEnded_) {
        const bool isLate = isLate_;
        {
            const std::lock_guard lock(mutex_);
            while (!isLate && sd_bus_process(bus_.get(), nullptr) > 0) {
            }
        }
        // What has come and is not answered yet would end every wait at once.
        pollfd awaited{sd_bus_get_fd(bus_.get()), POLLIN, 0};
        poll(&awaited, isLate ? 0 : 1, pollMilliseconds);
    }
}

}  // namespace tarvik::tests
