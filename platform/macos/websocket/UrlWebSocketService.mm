// SPDX-License-Identifier: MIT

#import "platform/macos/websocket/UrlWebSocketService.h"

#include <utility>

#import "platform/macos/websocket/UrlWebSocketSession.h"

namespace tarvik::macdesktop {

std::shared_ptr<platform::WebSocketSession> UrlWebSocketService::makeSession(
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate) {
    return std::make_shared<UrlWebSocketSession>(std::move(delegate));
}

}  // namespace tarvik::macdesktop
