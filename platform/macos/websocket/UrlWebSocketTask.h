#pragma once

#import <Foundation/Foundation.h>

#include "base/OneShot.h"
#include "platform/WebSocket.h"

namespace tarvik::macdesktop {

/// A connection as a task of NSURLSession, which calls what it is given on the session's delegate
/// queue. The task is owned together with NSURLSession, which holds it until its connection has
/// ended.
class UrlWebSocketTask final : public platform::WebSocketTask {
  public:
    /// One that cannot open ends when it is resumed, without a byte on the network.
    UrlWebSocketTask(NSURLSessionWebSocketTask* task, bool canOpen)
        : task_(task), canOpen_(canOpen) {}

    void resume() override;
    void send(platform::WebSocketMessage message, SendHandler handler) override;
    void receive(ReceiveHandler handler) override;
    void cancel(int closeCode) override;

    /// Says that the connection has ended; `error` says why, where the system knows. A receive that
    /// still waits gets it. The session's delegate queue.
    void didEnd(NSError* error);

  private:
    using WaitingReceive = OneShot<Result<platform::WebSocketMessage>>;

    NSURLSessionWebSocketTask* task_;
    bool canOpen_;
    /// NSURLSession holds it as well. It does not answer a receive in every case in which the
    /// connection ends.
    std::shared_ptr<WaitingReceive> waiting_ = std::make_shared<WaitingReceive>();
};

}  // namespace tarvik::macdesktop
