// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/WindowPing.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// The windows whose programs are not known to have looked up the keys that were typed there. A key
/// must keep its symbol until then: programs look keys up in the map that is valid when they read
/// the key. Input thread only.
class UnreadKeys {
  public:
    struct Events {
        /// Some keys are read, or not waited for any more.
        std::function<void()> onChange;
        /// A window's program has not answered for 30 s; so many characters may be lost.
        std::function<void(std::size_t characters)> onTimeout;
    };

    /// The references outlive the object.
    UnreadKeys(XcbConnection& connection, PollLoop& loop, WindowPing& ping, Events events);

    /// No key is waited for any longer.
    static constexpr std::chrono::seconds maxTimeout{30};

    bool isEmpty() const { return windows_.empty(); }
    /// One of the windows. Not to be called when there is none.
    xcb_window_t anyWindow() const { return windows_.begin()->first; }
    bool contains(xcb_window_t window) const { return windows_.contains(window); }

    /// Characters have been typed into a window; or none, to find out whether its program answers
    /// pings. A program that has answered before has 30 s to answer. One that only says so has 1 s,
    /// and any other has read its keys after 0.2 s.
    void add(xcb_window_t window, std::u32string_view characters);
    /// Every character whose key has to keep its symbol.
    std::set<char32_t> characters() const;
    /// Calls `action` once the keys of a window are read or not waited for any more; at once where
    /// there are none.
    void whenRead(xcb_window_t window, std::function<void()> action);
    /// A window has answered a ping.
    void handleAnswer(const WindowPing::Answer& answer);
    /// Waits for nothing any more.
    void clear();

  private:
    struct Keys {
        bool isPinged = false;
        bool isKnownToAnswer = false;
        // Of the last ping.
        std::uint32_t serial = 0;
        std::u32string characters;
        SteadyTime deadline;
        std::vector<std::function<void()>> onRead;
    };

    void setDeadline();
    void expire();
    void remove(xcb_window_t window);
    bool exists(xcb_window_t window) const;

    XcbConnection& connection_;
    WindowPing& ping_;
    Events events_;
    std::map<xcb_window_t, Keys> windows_;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
