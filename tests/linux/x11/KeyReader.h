// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstddef>
#include <thread>

namespace tarvik::tests {

/// A window of the test's own process that reads its keys, answers pings and draws nothing. A
/// thread of its own reads.
class KeyReader {
  public:
    /// Shows the window. The window manager gives the keyboard to it.
    KeyReader();
    ~KeyReader();
    KeyReader(const KeyReader&) = delete;
    KeyReader& operator=(const KeyReader&) = delete;

    /// How many key presses have been read. Any thread.
    std::size_t presses() const { return presses_; }
    /// How many pings have been answered. Any thread.
    std::size_t pings() const { return pings_; }
    xcb_window_t window() const { return window_; }

  private:
    xcb_atom_t atom(const char* name);
    void read();
    void handleMessage(xcb_client_message_event_t message);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_window_t window_;
    xcb_atom_t protocols_;
    xcb_atom_t ping_;
    std::atomic<std::size_t> presses_ = 0;
    std::atomic<std::size_t> pings_ = 0;
    std::thread thread_;
};

}  // namespace tarvik::tests
