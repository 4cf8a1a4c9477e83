// SPDX-License-Identifier: MIT

#include "platform/linux/sway/SwaySession.h"

#include <utility>

namespace tarvik::linuxdesktop {

Result<std::unique_ptr<InputSession>> SwaySession::open(EventLoop& loop, platform::Log& log,
                                                        Events events, SwayWindows::OnFront onFront,
                                                        AccompanyInX accompanyInX) {
    auto opened = SwayConnection::open();
    if (!opened) {
        return opened.error();
    }
    return std::unique_ptr<InputSession>(new SwaySession(std::move(opened).value(), loop, log,
                                                         std::move(events), std::move(onFront),
                                                         std::move(accompanyInX)));
}

SwaySession::SwaySession(std::unique_ptr<SwayConnection> connection, EventLoop& loop,
                         platform::Log& log, Events events, SwayWindows::OnFront onFront,
                         AccompanyInX accompanyInX)
    : loop_(loop),
      log_(log),
      events_(std::move(events)),
      accompanyInX_(std::move(accompanyInX)),
      connection_(std::move(connection)),
      windows_(*connection_, std::move(onFront)),
      hotKeys_(*connection_, loop, log, heard(events_.hotKeys), [this](KeyRepeat::OnKnown onKnown) {
          if (keyRepeat_) {
              keyRepeat_->ask(std::move(onKnown));
          }
      }) {
    connection_->attach(
        loop, [this](SwayConnection::Event event, std::string_view json) { handle(event, json); },
        [this] { events_.onLost("Sway is gone"); });
    subscribe();
}

void SwaySession::subscribe() {
    connection_->request(SwayConnection::Request::subscribe, R"(["binding","window","workspace"])",
                         [this](std::string_view) {
                             // Every change from here on is announced.
                             windows_.ask([this] { openTyping(); });
                         });
}

void SwaySession::openTyping() {
    auto opened = WaylandConnection::open();
    if (!opened) {
        events_.onReady(opened.error().localizedDescription);
        return;
    }
    wayland_ = std::move(opened).value();
    wayland_->attach(
        loop_,
        [this] {
            if (wayland_->offers(wl_seat_interface)) {
                keyRepeat_.emplace(*wayland_);
            }
            const std::string refusal = VirtualKeyboard::refusal(*wayland_);
            if (refusal.empty()) {
                typist_.emplace(*wayland_, windows_, loop_, log_);
            }
            events_.onReady(refusal);
        },
        [this](const std::string& reason) {
            events_.onLost("the compositor has ended the connection: " + reason);
        });
}

// The listener asks which window is in front. Sway announces no change to or from a launcher. In an
// X program a key of the virtual keyboard would bring its map into the X server, and the user's
// next key the user's map: a program that is stopped looks its text up in the wrong one.
SwayHotKeys::Events SwaySession::heard(SwayHotKeys::Events events) {
    auto onReleased = std::move(events.onReleased);
    events.onPressed = [this](HotKeyNumber number) {
        const bool isAccompaniedInX = windows_.front().isX11 && accompanyInX_();
        if (!isAccompaniedInX) {
            accompanyInWayland();
        }
        reportPress();
        press_ = number;
        windows_.ask([this, isAccompaniedInX] {
            if (isAccompaniedInX && !windows_.front().isX11) {
                accompanyInWayland();
            }
            reportPress();
        });
    };
    events.onReleased = [this, onReleased = std::move(onReleased)](HotKeyNumber number) {
        reportPress();
        onReleased(number);
    };
    return events;
}

void SwaySession::accompanyInWayland() {
    if (typist_) {
        typist_->accompanyAlt();
    }
}

void SwaySession::lendKeyboard(std::uint32_t xNumber) {
    if (typist_) {
        typist_->lendKeyboard(xNumber);
    }
}

void SwaySession::giveKeyboardBack(std::uint32_t xNumber) {
    if (typist_) {
        typist_->giveKeyboardBack(xNumber);
    }
}

void SwaySession::reportPress() {
    if (const auto number = std::exchange(press_, std::nullopt)) {
        events_.hotKeys.onPressed(*number);
    }
}

void SwaySession::handle(SwayConnection::Event event, std::string_view json) {
    if (event == SwayConnection::Event::binding) {
        hotKeys_.handleBinding(json);
    } else {
        windows_.handleEvent(event, json);
        if (event == SwayConnection::Event::workspace && changeIn(json) == "reload") {
            windows_.floatOwnWindows();
            hotKeys_.handleReload();
        }
    }
}

void SwaySession::end(std::function<void()> onDone) {
    hotKeys_.removeAll(std::move(onDone));
}

void SwaySession::flush() {
    if (wayland_) {
        wayland_->flush();
    }
}

}  // namespace tarvik::linuxdesktop
