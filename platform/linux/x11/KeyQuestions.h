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
    /// Numbers of questions: how many had come when the first unread key of a window was typed, and
    /// how many when note() was called last.
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
    /// The questions so far are no news any more.
    void note(Count& count) const { count.last = answers_.questionCount(); }
    /// Whether a window's program is known to ask.
    bool asks(xcb_window_t window) const { return habit(window).value_or(false); }
    /// IBus has answered every question so far. Whether the window's program may have more to ask
    /// about its `keys` unread keys, the last of which was typed at `typed`.
    bool areLeft(xcb_window_t window, const Count& count, std::size_t keys, SteadyTime typed) const;
    /// The window's program has asked all it had to ask. Its next keys count on that habit.
    void remember(xcb_window_t window, const Count& count);
    /// A window is gone.
    void handleDestroyed(xcb_window_t window) { habits_.erase(window); }

  private:
    bool hasAsked(const Count& count) const { return answers_.questionCount() != count.first; }
    std::optional<bool> habit(xcb_window_t window) const;

    IbusAnswers& answers_;
    // Whether the windows' programs have asked about their last keys.
    std::map<xcb_window_t, bool> habits_;
};

}  // namespace tarvik::linuxdesktop
