// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <atomic>
#include <chrono>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/input/XProgramHost.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/HoldFollower.h"
#include "platform/linux/x11/HotKeys.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/Typist.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// What the compositor does for the X server of its session, and what that server tells it. The
/// host may be null, and the functions may be empty while nothing is followed.
struct Compositor {
    XProgramHost* host = nullptr;
    HoldFollower::Events holds = {};
};

/// Everything that lives as long as the connection to the X server, and the meaning of the server's
/// events. Input thread only.
class X11Session {
  public:
    /// `front` always holds the window in front. `onLift` may be empty. The references outlive the
    /// object.
    X11Session(XcbConnection& connection, PollLoop& loop, platform::Log& log,
               HotKeys::Events hotKeyEvents, OnLift onLift, std::atomic<FrontWindow::Known>& front,
               std::chrono::milliseconds maxKeyboardWait = Typist::keyboardTimeout,
               Compositor compositor = {});

    HotKeys& hotKeys() { return hotKeys_; }
    Typist& typist() { return typist_; }
    HoldFollower& holds() { return holds_; }

    /// Asks the server which window is in front. Waits for the server.
    void refreshFront() { front_.refresh(); }

    /// Handles the events that have come and sends the requests that are ready. False once the
    /// server is gone.
    bool drain();

  private:
    HotKeys::Events heard(HotKeys::Events events);
    void handle(const xcb_generic_event_t& event);
    void handleProperty(const xcb_property_notify_event_t& event);
    void handleXinput(const xcb_ge_generic_event_t& event);
    void report(const xcb_generic_error_t& error);

    XcbConnection& connection_;
    platform::Log& log_;
    Keyboard keyboard_;
    FrontWindow front_;
    HotKeys hotKeys_;
    Typist typist_;
    HoldFollower holds_;
};

}  // namespace tarvik::linuxdesktop
