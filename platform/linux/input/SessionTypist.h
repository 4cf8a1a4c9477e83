// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/input/TypingMeans.h"

namespace tarvik::linuxdesktop {

/// Types the texts of one InputSession, one after the other. Loop thread only; no operation waits.
class SessionTypist {
  public:
    /// What has not been typed is lost: one line in the log per text, and `onTyped`.
    virtual ~SessionTypist() = default;

    /// Types `text` after every text before it. A text for a process goes to `window`, or to any
    /// window of the process where `window` is 0 or gone. `onTyped` is called once, in this or a
    /// later turn: the text has been handed on to its target, or is lost.
    virtual void type(TypedText text, std::int64_t window, std::function<void()> onTyped) = 0;
    /// Calls `onIdle` once, when no text is left.
    virtual void whenIdle(std::function<void()> onIdle) = 0;
};

}  // namespace tarvik::linuxdesktop
