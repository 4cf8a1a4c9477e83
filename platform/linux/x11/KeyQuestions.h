// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "platform/linux/ibus/IbusAnswers.h"

namespace tarvik::linuxdesktop {

/// Whether programs have asked IBus about all of their unread keys. IBus may be slow to read a
/// question, and does not tell for which window it is. Input thread only.
class KeyQuestions {
  public:
    /// The questions that have come since the unread keys of a window were typed.
    struct Count {
        std::uint64_t first = 0;
        std::uint64_t last = 0;
    };

    /// A program whose habit is unknown is looked at for so long.
    static constexpr std::chrono::milliseconds firstLookTime{300};

    /// `answers` outlives the object.
    explicit KeyQuestions(IbusAnswers& answers) : answers_(answers) {}

    /// Counts from here on.
    Count begin() const;
    /// How long a window's program, once it has answered a ping, is looked at for the time at which
    /// it is idle.
    std::chrono::milliseconds lookTime(xcb_window_t window) const;
    /// IBus has answered every question so far. Answers whether the window's program may have more
    /// to ask about its `keys` unread keys, the last of which was typed at `typed`.
    bool areLeft(xcb_window_t window, Count& count, std::size_t keys, SteadyTime typed);
    /// A window is gone.
    void handleDestroyed(xcb_window_t window) { asks_.erase(window); }

  private:
    std::optional<bool> asks(xcb_window_t window) const;

    IbusAnswers& answers_;
    // Whether the windows' programs have asked about their last keys.
    std::map<xcb_window_t, bool> asks_;
};

}  // namespace tarvik::linuxdesktop
