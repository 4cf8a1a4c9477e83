// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include "platform/WebSocket.h"

@class TarvikSocketDelegate;

namespace tarvik::macdesktop {

/// A session as an NSURLSession with a serial delegate queue of its own.
///
/// NSURLSession holds its delegate until the NSURLSession is invalidated: 10 s after the connection
/// has ended, or with this object when no connection was made. Until then that delegate holds the
/// core's delegate, as the contract demands.
class UrlWebSocketSession final : public platform::WebSocketSession {
  public:
    explicit UrlWebSocketSession(std::shared_ptr<platform::WebSocketSessionDelegate> delegate);
    ~UrlWebSocketSession() override;
    UrlWebSocketSession(const UrlWebSocketSession&) = delete;
    UrlWebSocketSession& operator=(const UrlWebSocketSession&) = delete;

    std::shared_ptr<platform::WebSocketTask> webSocketTask(
        const platform::UrlRequest& request) override;

  private:
    TarvikSocketDelegate* delegate_;
    NSURLSession* session_;
    bool hasConnection_ = false;
};

}  // namespace tarvik::macdesktop
