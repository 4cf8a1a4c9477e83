// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <map>

#include "platform/linux/ibus/IbusAnswers.h"
#include "platform/linux/x11/ConditionWait.h"
#include "platform/linux/x11/InputMethods.h"
#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/UnreadKeys.h"

namespace tarvik::linuxdesktop {

/// Keeps the keys for one window apart, where an input method runs. A toolkit sends each key to the
/// input method and goes on meanwhile, and may mix up keys that come faster. A program of the X
/// library takes its keys one by one by itself, however many there are. Input thread only.
class InputMethodPacing {
  public:
    /// The references outlive the object.
    InputMethodPacing(const Keyboard& keyboard, IbusAnswers& answers, UnreadKeys& unread,
                      ConditionWait& wait)
        : keyboard_(keyboard), answers_(answers), unread_(unread), wait_(wait) {}

    /// What gets the keys first, as the keyboard knew when it was refreshed.
    InputMethod method() const;
    /// Listens to IBus where it runs. Answers whether the text waits for the beginning of that, 1 s
    /// at the most and once in a burst of texts; `next` is called afterwards.
    bool awaitIbus(std::function<void()> next);
    /// A burst of texts has ended.
    void endTyping() { hasAwaitedIbus_ = false; }

    /// Whether the keys for a window have to be typed one by one. Asks the server.
    bool areKeptApart(xcb_window_t window) const;
    /// A key that is kept apart has been typed into a window.
    void handleKey(xcb_window_t window);
    /// Whether the next key for a window has to wait.
    bool isDue(xcb_window_t window) const { return paces_.contains(window); }
    /// Calls `next` once: with true when the next key may follow, with false when the window's
    /// program has not answered within 0.3 s. The next key still has to wait then.
    void await(xcb_window_t window, std::function<void(bool)> next);
    /// A window is gone.
    void handleDestroyed(xcb_window_t window) { paces_.erase(window); }

  private:
    struct Pace {
        bool isPinged = false;
        /// How many pings are to be sent and answered before the next key.
        int pings = 0;
    };

    void pingAgain(xcb_window_t window, const std::function<void(bool)>& next);

    const Keyboard& keyboard_;
    IbusAnswers& answers_;
    UnreadKeys& unread_;
    ConditionWait& wait_;
    bool hasAwaitedIbus_ = false;
    std::map<xcb_window_t, Pace> paces_;
};

}  // namespace tarvik::linuxdesktop
