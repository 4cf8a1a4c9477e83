#pragma once

#include <memory>
#include <vector>

#include "platform/Log.h"
#include "platform/WebSocket.h"
#include "platform/linux/websocket/SessionTiming.h"

namespace tarvik::linuxdesktop {

class SessionState;
class SessionThreads;
struct SessionSurroundings;

/// Web sockets over TLS by Boost.Beast and OpenSSL.
///
/// The certificate of the other end and its host name are verified against the system's trust store
/// (SSL_CERT_FILE and SSL_CERT_DIR replace it). A proxy is taken from https_proxy and no_proxy, in
/// either case, as they are when the service is made.
///
/// A session's serial queue is a thread that lives from its first need until the session lets its
/// delegate go. Destruction drops the connections that are still there without a word and joins the
/// threads; no handler and no notification comes after it. Sessions and tasks may outlive the
/// service; they do nothing any more.
class BeastWebSocketService final : public platform::WebSocketService {
  public:
    /// `log` takes lines on any thread until the service is gone.
    explicit BeastWebSocketService(platform::Log& log);
    BeastWebSocketService(platform::Log& log, SessionTiming timing);
    ~BeastWebSocketService() override;

    std::shared_ptr<platform::WebSocketSession> makeSession(
        std::shared_ptr<platform::WebSocketSessionDelegate> delegate) override;

  private:
    const std::shared_ptr<SessionThreads> threads_;
    const std::shared_ptr<const SessionSurroundings> surroundings_;
    std::vector<std::weak_ptr<SessionState>> sessions_;
};

}  // namespace tarvik::linuxdesktop
