// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/input/XProgramHost.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Which window has the keyboard, and of which process. The window manager decides; without a
/// window manager the input focus does. Input thread only.
class FrontWindow {
  public:
    /// A window and its process. XCB_NONE and 0 stand for none. Clang needs the alignment to load
    /// and store the pair without a lock.
    struct alignas(std::uint64_t) Known {
        xcb_window_t window = XCB_NONE;
        platform::ProcessIdentifier process = 0;
    };

    /// `front` gets the window in front, if its process is known. `host` gives the focus to windows
    /// where an X client cannot; it may be null. The references outlive the object.
    FrontWindow(XcbConnection& connection, std::atomic<Known>& front, XProgramHost* host = nullptr);
    /// No window is in front any more.
    ~FrontWindow();
    FrontWindow(const FrontWindow&) = delete;
    FrontWindow& operator=(const FrontWindow&) = delete;

    /// A property has changed. Answers whether it tells of the window in front or of the window
    /// manager.
    bool handleProperty(const xcb_property_notify_event_t& event);
    /// Asks the server again.
    void refresh() { remember(window()); }
    /// Asks the server again where no window manager announces changes.
    void refreshUnannounced();

    /// The top-level window in front right now; XCB_NONE when there is none.
    xcb_window_t window();
    /// The process of a window; empty when it is not known.
    std::optional<platform::ProcessIdentifier> processOf(xcb_window_t window);
    /// Whether `process` has the keyboard right now: `window`, or any window of the process where
    /// `window` is XCB_NONE, is in front and has the focus.
    bool isInFront(platform::ProcessIdentifier process, xcb_window_t window) {
        return focusIn(process, window) != XCB_NONE;
    }
    /// The window that has the focus where isInFront() holds, and XCB_NONE where it does not.
    xcb_window_t focusIn(platform::ProcessIdentifier process, xcb_window_t window);

    /// `wanted` where `process` has such a window, or else the window of the process that was in
    /// front last, or else its topmost window. XCB_NONE if the process has none.
    xcb_window_t windowOf(platform::ProcessIdentifier process, xcb_window_t wanted);
    /// Whether a window is shown and takes the focus that another client gives it. A window of the
    /// other kind wants to be asked by the window manager. With a host no window keeps such a
    /// focus.
    bool canBeGivenFocus(xcb_window_t window);
    /// Where the keys go: a window, or one of the server's own numbers, and where they go when that
    /// window is gone.
    struct Focus {
        xcb_window_t window = XCB_INPUT_FOCUS_NONE;
        std::uint8_t revertTo = XCB_INPUT_FOCUS_PARENT;
    };
    /// Empty when the server is gone.
    std::optional<Focus> focus();
    /// Sets the focus without the window manager, which can still carry out what the user asked for
    /// before. Waits for a reply of the server. False when the focus is elsewhere all the same.
    bool setFocus(const Focus& focus);
    /// Asks for a window to be brought to the front with the keyboard, on whichever workspace it
    /// is. The window manager may take a while.
    void activate(xcb_window_t window);
    /// Whether activate() has asked a host for the keyboard for this window.
    bool isBorrower(xcb_window_t window) const { return borrowers_.contains(window); }
    /// Has the host take the keyboard back from a borrower. False for any other window.
    bool endLoan(xcb_window_t window);

  private:
    bool hasManager();
    bool isPlaceholder(xcb_window_t window);
    xcb_window_t focusedWindow();
    xcb_window_t parentOf(xcb_window_t window);
    xcb_window_t topLevelOf(xcb_window_t window);
    bool isInAnotherWindow(xcb_window_t focused, xcb_window_t window);
    std::vector<xcb_window_t> windows();
    bool isViewable(xcb_window_t window);
    void remember(xcb_window_t window);
    void showWorkspaceOf(xcb_window_t window);
    void request(xcb_window_t window, xcb_atom_t type, std::uint32_t first, std::uint32_t second);

    XcbConnection& connection_;
    xcb_atom_t activeWindow_;
    xcb_atom_t currentWorkspace_;
    xcb_atom_t windowWorkspace_;
    xcb_atom_t clientList_;
    xcb_atom_t managerCheck_;
    xcb_atom_t windowProcess_;
    xcb_atom_t clientMachine_;
    std::atomic<Known>& front_;
    XProgramHost* const host_;
    // To whom the host has been asked to lend the keyboard.
    std::set<xcb_window_t> borrowers_;
    // The server's time of the last announcement of a window in front. The server's number for
    // "now" before the first one.
    xcb_timestamp_t activeSince_ = XCB_CURRENT_TIME;
    // The windows that were in front, the latest first.
    std::deque<Known> history_;
};

}  // namespace tarvik::linuxdesktop
