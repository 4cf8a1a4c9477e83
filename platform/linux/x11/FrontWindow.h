// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>

#include "platform/Workspace.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Which window has the keyboard, and of which process. The window manager decides; without a
/// window manager the input focus does. Input thread only.
class FrontWindow {
  public:
    /// `process` gets the process in front; 0 stands for none.
    FrontWindow(XcbConnection& connection, std::atomic<platform::ProcessIdentifier>& process);
    /// No process is in front any more.
    ~FrontWindow() { process_ = 0; }
    FrontWindow(const FrontWindow&) = delete;
    FrontWindow& operator=(const FrontWindow&) = delete;

    /// What a changed property of the root window means.
    enum class Change { none, window, windowManager };
    Change handleProperty(const xcb_property_notify_event_t& event);
    /// Asks the server again.
    void refresh() { remember(window()); }
    /// Asks the server again where no window manager announces changes.
    void refreshUnannounced();

    /// The top-level window in front right now; XCB_NONE when there is none.
    xcb_window_t window();
    /// The process of a window; empty when it is not known.
    std::optional<platform::ProcessIdentifier> processOf(xcb_window_t window);
    /// Whether `process` has the keyboard right now: its window is in front and has the focus.
    bool isInFront(platform::ProcessIdentifier process);

    /// The window of `process` that was in front last, or else its topmost window. XCB_NONE if the
    /// process has none.
    xcb_window_t windowOf(platform::ProcessIdentifier process);
    /// Whether a window is shown and takes the focus that another client gives it. A window of the
    /// other kind wants to be asked by the window manager.
    bool canBeGivenFocus(xcb_window_t window);
    /// Where the keys go: a window, or one of the server's own numbers, and where they go when that
    /// window is gone.
    struct Focus {
        xcb_window_t window = XCB_INPUT_FOCUS_NONE;
        std::uint8_t revertTo = XCB_INPUT_FOCUS_PARENT;
    };
    /// Empty when the server is gone.
    std::optional<Focus> focus();
    /// Sets the focus without the window manager.
    void setFocus(const Focus& focus);
    /// Asks for a window to be brought to the front with the keyboard. The window manager may take
    /// a while.
    void activate(xcb_window_t window);

  private:
    struct Known {
        xcb_window_t window = XCB_NONE;
        platform::ProcessIdentifier process = 0;
    };

    bool hasManager();
    xcb_window_t focusedWindow();
    xcb_window_t topLevelOf(xcb_window_t window);
    bool isViewable(xcb_window_t window);
    void remember(xcb_window_t window);

    XcbConnection& connection_;
    xcb_atom_t activeWindow_;
    xcb_atom_t clientList_;
    xcb_atom_t managerCheck_;
    xcb_atom_t windowProcess_;
    xcb_atom_t clientMachine_;
    std::atomic<platform::ProcessIdentifier>& process_;
    // The windows that were in front, the latest first.
    std::deque<Known> history_;
};

}  // namespace tarvik::linuxdesktop
