#pragma once

#include <memory>
#include <utility>

#include "platform/WebSocket.h"
#include "platform/linux/websocket/SessionState.h"

namespace tarvik::linuxdesktop {

/// A session of BeastWebSocketService.
class BeastWebSocketSession final : public platform::WebSocketSession {
  public:
    explicit BeastWebSocketSession(std::shared_ptr<SessionState> state)
        : state_(std::move(state)) {}

    std::shared_ptr<platform::WebSocketTask> webSocketTask(
        const platform::UrlRequest& request) override;

  private:
    const std::shared_ptr<SessionState> state_;
};

}  // namespace tarvik::linuxdesktop
