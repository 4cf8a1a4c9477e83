// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <map>
#include <optional>

#include "platform/Workspace.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Chooses the window that a text goes to, brings the window to the front where the text needs
/// that, and waits for windows that come late. Input thread only.
class TargetWindow {
  public:
    /// `onChange` is called when isAwaited() may have changed without an event of the server.
    TargetWindow(XcbConnection& connection, FrontWindow& front, PollLoop& loop,
                 std::function<void()> onChange);

    enum class Place {
        /// In front, with the keyboard. `window` is empty where any window of the process will do.
        inFront,
        /// Not in front. The window takes the focus for the length of a burst.
        behind,
        /// Not in front. The window takes keys only there.
        hidden,
        /// As `hidden`, and the window has not come to the front in 30 s.
        late,
        /// There is none: the process has none.
        missing,
        /// There is none: the process has ended.
        ended
    };
    struct Target {
        Place place = Place::missing;
        xcb_window_t window = XCB_NONE;
    };
    /// Where the text for `process` goes: to `wanted` while that window exists, and otherwise to
    /// the window of the process that was in front last.
    Target find(platform::ProcessIdentifier process, xcb_window_t wanted);

    /// Asks for a window to be brought to the front. Its focus events come from here on.
    void bringToFront(xcb_window_t window);
    /// Whether a window has been brought to the front and the focus not been given back.
    bool isBroughtToFront() const { return broughtToFront_ != XCB_NONE; }
    xcb_window_t broughtToFront() const { return broughtToFront_; }
    /// Gives the focus back to the window that had it, unless the user has moved it meanwhile. A
    /// window that is shown has the focus at once, and the window manager learns of it later.
    void giveFocusBack();
    /// Whether the window manager has yet to bring that window back. False once the window is in
    /// front or gone, once the user has moved the focus elsewhere, and after 30 s.
    bool isFocusOnItsWayBack();

    /// The window that has been brought to the front is not there yet, and its text lets others
    /// pass for 30 s.
    void await(platform::ProcessIdentifier process);
    /// Whether a window is still waited for: it exists, is not in front, and its time has not
    /// passed.
    bool isAwaited(xcb_window_t window);

  private:
    struct Return {
        xcb_window_t from = XCB_NONE;
        xcb_window_t to = XCB_NONE;
        /// Empty when it is not known.
        std::optional<platform::ProcessIdentifier> process;
        SteadyTime requested;
    };
    struct Awaited {
        platform::ProcessIdentifier process = 0;
        xcb_window_t earlierFront = XCB_NONE;
        SteadyTime requested;
    };

    void arrive(xcb_window_t window);
    bool forget(xcb_window_t window);
    void setDeadline();

    XcbConnection& connection_;
    FrontWindow& front_;
    std::function<void()> onChange_;
    xcb_window_t broughtToFront_ = XCB_NONE;
    xcb_window_t earlierFront_ = XCB_NONE;
    std::optional<Return> return_;
    std::map<xcb_window_t, Awaited> awaited_;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
