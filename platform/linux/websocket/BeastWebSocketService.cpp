#include "platform/linux/websocket/BeastWebSocketService.h"

#include "platform/linux/websocket/BeastWebSocketSession.h"
#include "platform/linux/websocket/SessionState.h"
#include "platform/linux/websocket/SessionSurroundings.h"
#include "platform/linux/websocket/SessionThreads.h"

namespace tarvik::linuxdesktop {

BeastWebSocketService::BeastWebSocketService(platform::Log& log)
    : BeastWebSocketService(log, SessionTiming{}) {}

BeastWebSocketService::BeastWebSocketService(platform::Log& log, SessionTiming timing)
    : threads_(std::make_shared<SessionThreads>()),
      surroundings_(
          new SessionSurroundings{log, timing, ProxySettings::fromEnvironment(), TrustStore()}) {}

BeastWebSocketService::~BeastWebSocketService() {
    std::vector<std::shared_ptr<SessionState>> sessions;
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
    auto state = std::make_shared<SessionState>(threads_, surroundings_, delegate);
    sessions_.push_back(state);
    return std::make_shared<BeastWebSocketSession>(std::move(state));
}

}  // namespace tarvik::linuxdesktop
