// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace tarvik::linuxdesktop {

/// A means of hotkeys that hears of no release while an X program has the keyboard. The X server of
/// these programs hears it. Holds have numbers that grow. Any thread; no operation waits.
class XHoldListener {
  public:
    /// Gets the number of a hold that begins, and nothing at its end.
    using Follow = std::function<void(std::optional<std::uint64_t> hold)>;

    virtual ~XHoldListener() = default;

    /// From here on `follow` is called for each hold, and for one that lasts already. An empty
    /// function ends that, and the one before is not called any more. It is called on any thread,
    /// and neither waits nor calls this object.
    virtual void setXFollower(Follow follow) = 0;

    /// Whether the X server will tell when a key of this hold goes up. It did not before the first
    /// call.
    virtual void handleKeysSeenInX(std::uint64_t hold, bool areSeen) = 0;
    /// A key of this hold has gone up, in an X program.
    virtual void handleReleaseInX(std::uint64_t hold) = 0;
};

}  // namespace tarvik::linuxdesktop
