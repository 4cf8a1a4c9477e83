// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/HotKeys.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Tells when the keys of a held hotkey go up that a Wayland compositor has heard, while one of its
/// X programs has the keyboard. The compositor keeps the press of the space bar to itself, and
/// passes every release on to the X server. Input thread only.
class HoldFollower {
  public:
    /// As in XHoldListener, but on the input thread.
    struct Events {
        std::function<void(std::uint64_t hold, bool areSeen)> onSeen;
        std::function<void(std::uint64_t hold)> onReleased;
    };

    /// How long after a release the server is asked whether an X program still has the keyboard.
    /// For a keyboard that goes to another program the compositor reports every key as released.
    static constexpr std::chrono::milliseconds confirmationDelay{50};

    /// The references outlive the object.
    HoldFollower(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front,
                 HotKeys& hotKeys, EventLoop& loop, Events events);
    /// From here on nothing is told of the hold.
    ~HoldFollower();
    HoldFollower(const HoldFollower&) = delete;
    HoldFollower& operator=(const HoldFollower&) = delete;

    /// A hold has begun, or nothing is held any more. Waits for the server.
    void follow(std::optional<std::uint64_t> hold);
    /// Another window may be in front. Waits for the server during a hold.
    void handleFrontChange();

  private:
    void observeKeys();
    void look();
    void setSeen(bool areSeen);
    void confirmRelease();

    XcbConnection& connection_;
    Keyboard& keyboard_;
    FrontWindow& front_;
    HotKeys& hotKeys_;
    const Events events_;
    std::optional<std::uint64_t> hold_;
    // Of Alt.
    std::vector<xcb_keycode_t> modifierKeys_;
    // What onSeen has told last.
    bool areSeen_ = false;
    bool isAccompanied_ = false;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
