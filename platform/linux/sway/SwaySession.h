// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Log.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/sway/SwayConnection.h"
#include "platform/linux/sway/SwayHotKeys.h"
#include "platform/linux/sway/SwayWindows.h"
#include "platform/linux/wayland/KeyRepeat.h"
#include "platform/linux/wayland/VirtualTypist.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// Everything that lives as long as the connections to Sway, and the meaning of Sway's events. Loop
/// thread only.
class SwaySession {
  public:
    struct Events {
        SwayHotKeys::Events hotKeys;
        SwayWindows::OnFront onFront;
        /// Sway has answered. With a text, nothing can be typed, and the text says why.
        std::function<void(const std::string& typingRefusal)> onReady;
        /// Sway is gone, or has ended one of the connections. May be called for each of them.
        std::function<void(const std::string& reason)> onLost;
    };

    /// The references outlive the object. The callbacks do not destroy the object.
    SwaySession(std::unique_ptr<SwayConnection> connection, EventLoop& loop, platform::Log& log,
                Events events);
    SwaySession(const SwaySession&) = delete;
    SwaySession& operator=(const SwaySession&) = delete;

    SwayHotKeys& hotKeys() { return hotKeys_; }
    /// Null while nothing can be typed.
    VirtualTypist* typist() { return typist_ ? &*typist_ : nullptr; }

    /// Sends what is ready. To be called before the loop sleeps.
    void flush();

  private:
    SwayHotKeys::Events heard(SwayHotKeys::Events events);
    void subscribe();
    void openTyping();
    void handle(SwayConnection::Event event, std::string_view json);
    void reportPress();

    EventLoop& loop_;
    platform::Log& log_;
    Events events_;
    std::unique_ptr<SwayConnection> connection_;
    SwayWindows windows_;
    // A press of which the listener does not know yet.
    std::optional<HotKeyNumber> press_;
    SwayHotKeys hotKeys_;
    std::unique_ptr<WaylandConnection> wayland_;
    std::optional<KeyRepeat> keyRepeat_;
    std::optional<VirtualTypist> typist_;
};

}  // namespace tarvik::linuxdesktop
