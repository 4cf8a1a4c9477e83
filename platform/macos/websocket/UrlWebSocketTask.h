// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include "base/OneShot.h"
#include "platform/WebSocket.h"

namespace tarvik::macdesktop {

/// A connection as an NSURLSessionWebSocketTask. Every handler is called on the session's delegate
/// queue. The session's delegate shares the ownership until the NSURLSession is invalidated.
class UrlWebSocketTask final : public platform::WebSocketTask {
  public:
    /// A task that cannot open ends in resume(), without a byte on the network.
    UrlWebSocketTask(NSURLSessionWebSocketTask* task, bool canOpen)
        : task_(task), canOpen_(canOpen) {}

    void resume() override;
    void send(platform::WebSocketMessage message, SendHandler handler) override;
    void receive(ReceiveHandler handler) override;
    void cancel(int closeCode) override;

    /// Reports the end of the connection to a waiting receive. `error` is the system's reason, or
    /// nil. On the session's delegate queue.
    void didEnd(NSError* error);

  private:
    using WaitingReceive = OneShot<Result<platform::WebSocketMessage>>;

    NSURLSessionWebSocketTask* task_;
    bool canOpen_;
    /// Shared with the completion handler of the receive: NSURLSession does not answer a receive in
    /// every case in which the connection ends.
    std::shared_ptr<WaitingReceive> waiting_ = std::make_shared<WaitingReceive>();
};

}  // namespace tarvik::macdesktop
