// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace tarvik::linuxdesktop {

/// The settings of a BeastWebSocketService.
struct WebSocketOptions {
    /// The maximum duration of a close handshake. The connection is aborted after it.
    std::chrono::milliseconds closeTimeout = std::chrono::seconds(1);
    /// The time from the end of a connection to the release of its delegate.
    std::chrono::milliseconds delegateHoldTime = std::chrono::seconds(10);
    /// The path of certificates (PEM) that are trusted beside the system's; empty for none.
    std::string authority = {};
    /// Called when a service has opened a web socket (true), or has refused to with the status 401
    /// (false). On the thread of a session; must not block. May be empty.
    std::function<void(bool isKeyAccepted)> onKeyAnswer = {};
};

}  // namespace tarvik::linuxdesktop
