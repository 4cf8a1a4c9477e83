// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Time.h"
#include "platform/WebSocket.h"

namespace tarvik::tests {

/// The environment of a web-socket service: the server of its connections, and time.
///
/// The operations of the server affect the last connection. Main thread only.
class WebSocketWorld {
  public:
    virtual ~WebSocketWorld() = default;

    virtual platform::WebSocketService& service() = 0;
    /// A request that this world's server can accept.
    virtual platform::UrlRequest request() = 0;

    /// Lets time pass until `condition` holds. False after a timeout.
    virtual bool runUntil(const std::function<bool()>& condition) = 0;
    /// Lets all pending events happen, so that an unexpected event would show.
    virtual void settle() = 0;
    virtual Seconds now() = 0;
    /// How long a session holds its delegate after the end of the connection.
    virtual Seconds delegateHoldTime() = 0;

    virtual void accept(const std::string& protocol) = 0;
    virtual void sendText(const std::string& text) = 0;
    virtual void sendData(const std::string& bytes) = 0;
    virtual void sendClose(int code, const std::string& reason) = 0;
    /// Breaks the connection without a close handshake.
    virtual void lose() = 0;
    /// The next message from the client.
    virtual platform::WebSocketMessage nextMessage() = 0;
};

struct WebSocketWorldMaker {
    std::string name;
    std::function<std::unique_ptr<WebSocketWorld>()> make;
};

std::unique_ptr<WebSocketWorld> makeSimulatedWebSocketWorld();
/// The world of the backend for which the program is built.
WebSocketWorldMaker realWebSocketWorld();

inline std::string nameOf(const testing::TestParamInfo<WebSocketWorldMaker>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
