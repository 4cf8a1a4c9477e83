// SPDX-License-Identifier: MIT

#include "platform/linux/portal/PortalSession.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

Result<std::unique_ptr<InputSession>> PortalSession::open(EventLoop& loop, platform::Log& log,
                                                          Events events) {
    auto opened = MessageBus::openSession();
    if (!opened) {
        return Error{opened.error().code,
                     "there is no session bus: " + opened.error().localizedDescription};
    }
    return std::unique_ptr<InputSession>(
        new PortalSession(std::move(opened).value(), loop, log, std::move(events)));
}

PortalSession::PortalSession(std::unique_ptr<MessageBus> bus, EventLoop& loop, platform::Log& log,
                             Events events)
    : events_(std::move(events)),
      bus_(std::move(bus)),
      start_(loop),
      hotKeys_(*bus_, loop, log, events_.hotKeys) {
    bus_->attach(loop, [this](const Error& error) {
        events_.onLost("the session bus is gone: " + error.localizedDescription);
    });
    start_.set(std::chrono::milliseconds(0), [this] { events_.onReady(""); });
}

}  // namespace tarvik::linuxdesktop
