// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "platform/linux/input/SessionHotKeys.h"
#include "platform/linux/input/SessionTypist.h"

namespace tarvik::linuxdesktop {

/// Everything that lives as long as the connections to one desktop. Loop thread only; no operation
/// waits, unless the class that implements the operation says so.
class InputSession {
  public:
    /// What a session tells its owner, in turns of the loop. The callbacks do not destroy the
    /// session.
    struct Events {
        SessionHotKeys::Events hotKeys;
        /// The desktop has answered. With a text, nothing can be typed, and the text says why.
        /// Once.
        std::function<void(const std::string& typingRefusal)> onReady;
        /// The desktop is not there, or lacks what is needed. A session that is kept goes on
        /// looking for a desktop that may still come.
        std::function<void(const std::string& reason)> onRefused;
        /// The desktop is gone, or has ended a connection. May be called for each connection.
        std::function<void(const std::string& reason)> onLost;
    };

    /// Ends a hold. What has not been typed is lost.
    virtual ~InputSession() = default;

    /// Null where the desktop has no hotkeys for programs.
    virtual SessionHotKeys* hotKeys() { return nullptr; }
    /// Null while nothing can be typed.
    virtual SessionTypist* typist() = 0;

    /// Sends what is ready. Called before the loop sleeps.
    virtual void flush() {}
    /// Gives back what the session has of the desktop. `onDone` is called once, in this or a later
    /// turn. The last call but flush().
    virtual void end(std::function<void()> onDone) = 0;
};

}  // namespace tarvik::linuxdesktop
