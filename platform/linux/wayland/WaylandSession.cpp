// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/WaylandSession.h"

#include <string>
#include <utility>

namespace tarvik::linuxdesktop {

Result<std::unique_ptr<InputSession>> WaylandSession::open(EventLoop& loop, platform::Log& log,
                                                           Events events,
                                                           ToplevelWindows::OnFront onFront) {
    auto opened = WaylandConnection::open();
    if (!opened) {
        return opened.error();
    }
    return std::unique_ptr<InputSession>(new WaylandSession(std::move(opened).value(), loop, log,
                                                            std::move(events), std::move(onFront)));
}

WaylandSession::WaylandSession(std::unique_ptr<WaylandConnection> connection, EventLoop& loop,
                               platform::Log& log, Events events, ToplevelWindows::OnFront onFront)
    : loop_(loop),
      log_(log),
      events_(std::move(events)),
      onFront_(std::move(onFront)),
      connection_(std::move(connection)) {
    connection_->attach(
        loop, [this] { handleOffers(); },
        [this](const std::string& reason) {
            events_.onLost("the compositor has ended the connection: " + reason);
        });
}

void WaylandSession::handleOffers() {
    std::string reason = VirtualKeyboard::refusal(*connection_);
    if (reason.empty()) {
        reason = ToplevelWindows::refusal(*connection_);
    }
    if (!reason.empty()) {
        events_.onRefused(reason);
        return;
    }
    windows_.emplace(*connection_, onFront_);
    typist_.emplace(*connection_, *windows_, loop_, log_);
    windows_->ask([this] { events_.onReady(""); });
}

void WaylandSession::beginRecording(std::int64_t choice, platform::ProcessIdentifier process) {
    if (typist_) {
        windows_->choose(choice, process);
        typist_->accompanyAlt();
    }
}

}  // namespace tarvik::linuxdesktop
