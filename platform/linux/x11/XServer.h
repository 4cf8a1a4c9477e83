// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/x11/FrontWindow.h"

namespace tarvik::linuxdesktop {

/// The X server of the X programs in a Wayland session, as XwaylandInput uses it. Main thread only,
/// unless a line says otherwise; no operation waits for the server.
class XServer {
  public:
    virtual ~XServer() = default;

    /// Why the server does not serve; empty while it serves, and while it has not answered yet.
    virtual std::optional<std::string> refusal() const = 0;
    /// Whether the server has served and is gone. Any thread.
    virtual bool isGone() const = 0;

    /// The X window in front that was noticed last; none while a program of Wayland has the
    /// keyboard, and while the server has not answered yet. Any thread.
    virtual FrontWindow::Known front() const = 0;
    /// Asks the server for the X window in front. `onAnswer` gets the answer on the main thread, in
    /// a later turn. It is not called while the server does not answer.
    virtual void askFront(std::function<void(FrontWindow::Known)> onAnswer) = 0;

    /// As TypingMeans::type(). The text goes to `window` while the process has that window.
    virtual void typeInto(xcb_window_t window, TypedText text, std::function<void()> onDone) = 0;
};

}  // namespace tarvik::linuxdesktop
