// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

/// Which window has the keyboard, from whatever tells it in a session: the Wayland protocols for
/// typing do not. Loop thread only.
class WindowFocus {
  public:
    /// A window and its process. 0 stands for none, or for one that is not known.
    struct Window {
        std::int64_t number = 0;
        platform::ProcessIdentifier process = 0;
        /// Whether an X server stands between the compositor and the program.
        bool isX11 = false;
        /// The number that the X server has for it; 0 where that is not known.
        std::uint32_t xNumber = 0;
    };

    virtual ~WindowFocus() = default;

    /// Asks which window has the keyboard. `onKnown` is called in a later turn, when front(),
    /// windowOf() and changeCount() tell what was the case after this call. Without an answer
    /// `onKnown` is not called.
    virtual void ask(std::function<void()> onKnown) = 0;

    /// The window that has the keyboard, as far as is known.
    virtual Window front() const = 0;
    /// How often the keyboard has gone to another window so far.
    virtual std::uint64_t changeCount() const = 0;
    /// `wanted` where `process` has such a window, or else the window of the process that was in
    /// front last. 0 if the process has no window. Without a process, `wanted` where such a window
    /// exists, or else 0.
    virtual std::int64_t windowOf(std::optional<platform::ProcessIdentifier> process,
                                  std::int64_t wanted) const = 0;

    /// The number of a window that has a number in the X server; 0 where there is none.
    virtual std::int64_t windowOfX(std::uint32_t /*xNumber*/) const { return 0; }

    /// Gives the keyboard to a window, on whichever workspace it is. The compositor may refuse.
    virtual void activate(std::int64_t window) = 0;
    /// Gives the keyboard back to what had it before the first activate() since the last call.
    virtual void giveBack() = 0;

    /// A number that no window has had, also in a session that has ended: a text for that window
    /// must not go to another one. Any thread.
    static std::int64_t newWindowNumber() {
        static std::atomic<std::int64_t> last = 0;
        return ++last;
    }
};

}  // namespace tarvik::linuxdesktop
