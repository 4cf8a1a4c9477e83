// SPDX-License-Identifier: MIT
#pragma once

#include "platform/WebSocket.h"

namespace tarvik::macdesktop {

/// Web sockets by NSURLSession, with one NSURLSession for each session. Certificates, proxies and
/// name lookup are the system's.
class UrlWebSocketService final : public platform::WebSocketService {
  public:
    std::shared_ptr<platform::WebSocketSession> makeSession(
        std::shared_ptr<platform::WebSocketSessionDelegate> delegate) override;
};

}  // namespace tarvik::macdesktop
