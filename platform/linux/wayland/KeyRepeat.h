// SPDX-License-Identifier: MIT
#pragma once

#include <wayland-client.h>

#include <chrono>
#include <functional>
#include <memory>

#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// How the keyboard that was used last repeats a held key. Loop thread only.
class KeyRepeat {
  public:
    struct Setting {
        /// From the press to the first repeat.
        std::chrono::milliseconds delay{0};
        /// From one repeat to the next. 0 where the keyboard repeats nothing.
        std::chrono::milliseconds interval{0};
    };
    using OnKnown = std::function<void(Setting)>;

    /// `connection` offers a seat, and outlives the object.
    explicit KeyRepeat(WaylandConnection& connection);
    KeyRepeat(const KeyRepeat&) = delete;
    KeyRepeat& operator=(const KeyRepeat&) = delete;

    /// Asks about the keyboard that is in use when the compositor reads this request. `onKnown` is
    /// called once, in a later turn; not at all when the compositor does not tell, or when the next
    /// question comes first.
    void ask(OnKnown onKnown);

  private:
    struct SeatDestroyed {
        void operator()(wl_seat* seat) const { wl_seat_destroy(seat); }
    };
    // Keeps the compositor from telling of every later change.
    struct KeyboardReleased {
        void operator()(wl_keyboard* keyboard) const { wl_keyboard_release(keyboard); }
    };

    static void handleRepeatInfo(void* self, wl_keyboard* keyboard, std::int32_t rate,
                                 std::int32_t delay);

    std::unique_ptr<wl_seat, SeatDestroyed> seat_;
    std::unique_ptr<wl_keyboard, KeyboardReleased> keyboard_;
    OnKnown onKnown_;
};

}  // namespace tarvik::linuxdesktop
