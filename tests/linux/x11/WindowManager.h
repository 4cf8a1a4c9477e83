// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xproto.h>

#include "platform/Workspace.h"
#include "tests/support/RealTimeQueue.h"

namespace tarvik::tests {

/// Waits until the window manager has followed every change so far, as one of the keyboard map,
/// after which it grabs its keys again. False when it takes more than 30 s, since a
/// busy one has fallen behind.
bool waitForWindowManager(RealTimeQueue& mainQueue);

/// The window in front, as the window manager says.
xcb_window_t frontWindow();

/// Gives a window the focus. The window manager is not asked, and learns of it.
void setFocus(xcb_window_t window);

/// Asks the window manager to bring a window of a process to the front, as a click on it does.
void bringToFront(platform::ProcessIdentifier process);

/// Moves the window in front to another workspace, where it is not shown.
void moveFrontWindowAway();

/// Hides the window in front, on its workspace.
void minimiseFrontWindow();

/// The window manager does nothing as long as the object lives.
class StoppedWindowManager {
  public:
    StoppedWindowManager();
    ~StoppedWindowManager();
    StoppedWindowManager(const StoppedWindowManager&) = delete;
    StoppedWindowManager& operator=(const StoppedWindowManager&) = delete;

  private:
    platform::ProcessIdentifier process_;
};

}  // namespace tarvik::tests
