// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "platform/linux/input/TypingMeans.h"

namespace tarvik::linuxdesktop {

/// The texts that wait to be typed. Texts for one process keep their order. A text that waits for
/// its target holds up no other process. Input thread only.
class TypingQueue {
  public:
    struct Item {
        TypedText text;
        /// The window of the process that the text is for; XCB_NONE where any will do.
        xcb_window_t window = XCB_NONE;
        /// More than one where texts for the same process were joined.
        std::vector<std::function<void()>> onTyped;
        /// How many characters have been typed.
        std::size_t position = 0;
        /// The window whose keys have to be read, or that has to come to the front, before typing
        /// goes on.
        xcb_window_t waitsFor = XCB_NONE;
        /// When the last of the joined texts came.
        std::chrono::steady_clock::time_point posted = std::chrono::steady_clock::now();
    };
    /// Whether the keys in a window have been read.
    using IsRead = std::function<bool(xcb_window_t window)>;

    bool isEmpty() const { return items_.empty(); }
    const std::deque<Item>& items() const { return items_; }

    /// Adds a text behind all others.
    void push(TypedText text, xcb_window_t window, std::function<void()> onTyped);
    /// Puts an item in front of all others.
    void putBack(Item item) { items_.push_front(std::move(item)); }
    /// Whether take() has an item.
    bool hasNext(const IsRead& isRead) const { return findNext(isRead) != items_.end(); }
    /// Takes the first item that need not wait; empty when there is none.
    std::optional<Item> take(const IsRead& isRead);
    /// Takes the items that wait for a window, and those behind them for the same processes.
    std::vector<Item> takeWaitingFor(xcb_window_t window);
    /// Calls the handlers of items that will not be typed. Answers how many characters are lost.
    static std::size_t drop(const std::vector<Item>& items);

  private:
    std::deque<Item>::const_iterator findNext(const IsRead& isRead) const;

    std::deque<Item> items_;
};

}  // namespace tarvik::linuxdesktop
