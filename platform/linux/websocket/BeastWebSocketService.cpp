// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/BeastWebSocketService.h"

#include <utility>

#include "platform/linux/websocket/BeastWebSocketSession.h"
#include "platform/linux/websocket/SessionContext.h"
#include "platform/linux/websocket/ThreadRegistry.h"

namespace tarvik::linuxdesktop {

BeastWebSocketService::BeastWebSocketService(platform::Log& log, WebSocketOptions options)
    : threads_(std::make_shared<ThreadRegistry>(log)),
      context_(new SessionContext(log, std::move(options))) {
    threads_->start([context = context_] { context->trustStore.prepare(); });
}

BeastWebSocketService::~BeastWebSocketService() {
    std::vector<std::shared_ptr<BeastWebSocketSession>> sessions;
    for (const auto& weakSession : sessions_) {
        if (auto session = weakSession.lock()) {
            session->close();
            sessions.push_back(std::move(session));
        }
    }
    threads_->joinAll();
    for (const auto& session : sessions) {
        session->releaseDelegate();
    }
}

std::shared_ptr<platform::WebSocketSession> BeastWebSocketService::makeSession(
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate) {
    std::erase_if(sessions_, [](const auto& session) { return session.expired(); });
    auto session = std::make_shared<BeastWebSocketSession>(threads_, context_, delegate);
    sessions_.push_back(session);
    return session;
}

}  // namespace tarvik::linuxdesktop
