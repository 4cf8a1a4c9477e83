// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <map>

#include "platform/linux/x11/ConditionWait.h"
#include "platform/linux/x11/UnreadKeys.h"

namespace tarvik::linuxdesktop {

/// Keeps the keys for one window apart, where an input method runs. A program sends each key to the
/// input method and goes on meanwhile, and may mix up keys that come faster. Input thread only.
class InputMethodPacing {
  public:
    /// The references outlive the object.
    InputMethodPacing(UnreadKeys& unread, ConditionWait& wait) : unread_(unread), wait_(wait) {}

    /// A key has been typed into a window. `isAnswerKnown` tells whether an unread key waits for
    /// the answer of the input method.
    void handleKey(xcb_window_t window, bool isAnswerKnown);
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

    UnreadKeys& unread_;
    ConditionWait& wait_;
    std::map<xcb_window_t, Pace> paces_;
};

}  // namespace tarvik::linuxdesktop
