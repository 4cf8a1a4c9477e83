// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>
#include <xcb/xproto.h>

namespace tarvik::tests {

/// A window of another process, which does nothing else. The constructor forks, so that no other
/// thread may run in the test.
class ForkedWindow {
  public:
    /// Connects to the server and shows the first window of that connection.
    ForkedWindow();
    /// Kills the process.
    ~ForkedWindow();
    ForkedWindow(const ForkedWindow&) = delete;
    ForkedWindow& operator=(const ForkedWindow&) = delete;

    pid_t process() const { return process_; }
    xcb_window_t window() const { return window_; }

  private:
    pid_t process_ = 0;
    xcb_window_t window_ = XCB_NONE;
};

}  // namespace tarvik::tests
