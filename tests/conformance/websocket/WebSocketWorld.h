#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Time.h"
#include "platform/WebSocket.h"

namespace tarvik::tests {

/// The outside of a web-socket service: the other end of its connections, and time.
///
/// What the other end does concerns the connection that was made last. A test runs on the main
/// thread.
class WebSocketWorld {
  public:
    virtual ~WebSocketWorld() = default;

    virtual platform::WebSocketService& service() = 0;
    /// A request that this world's other end can accept.
    virtual platform::UrlRequest request() = 0;

    /// Lets time pass until `condition` holds; false when it takes too long.
    virtual bool runUntil(const std::function<bool()>& condition) = 0;
    /// Lets everything happen that is due, so that what must not happen would show.
    virtual void settle() = 0;
    virtual Seconds now() = 0;
    /// How long a delegate is held after the end of its connection.
    virtual Seconds delegateHoldTime() = 0;

    virtual void accept(const std::string& protocol) = 0;
    virtual void sendText(const std::string& text) = 0;
    virtual void sendData(const std::string& bytes) = 0;
    virtual void sendClose(int code, const std::string& reason) = 0;
    /// The connection breaks without a farewell.
    virtual void lose() = 0;
    /// The next message that the client sent.
    virtual platform::WebSocketMessage nextMessage() = 0;
};

struct WebSocketWorldMaker {
    std::string name;
    std::function<std::unique_ptr<WebSocketWorld>()> make;
};

inline std::string nameOf(const testing::TestParamInfo<WebSocketWorldMaker>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
