#include "platform/linux/websocket/BeastWebSocketSession.h"

#include "platform/linux/websocket/BeastWebSocketTask.h"

namespace tarvik::linuxdesktop {

std::shared_ptr<platform::WebSocketTask> BeastWebSocketSession::webSocketTask(
    const platform::UrlRequest& request) {
    auto task = std::make_shared<BeastWebSocketTask>(state_, request);
    state_->connectionMade(task);
    return task;
}

}  // namespace tarvik::linuxdesktop
