// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "platform/Log.h"
#include "platform/WebSocket.h"
#include "platform/linux/websocket/WebSocketOptions.h"

namespace tarvik::linuxdesktop {

class BeastWebSocketSession;
class ThreadRegistry;
struct SessionContext;

/// Web sockets over TLS by Boost.Beast and OpenSSL.
///
/// The server's certificate and host name are verified against the system's trust store and the
/// authority of the options. SSL_CERT_FILE and SSL_CERT_DIR replace the system's trust store. An
/// authority that cannot be read costs one line in the log. The proxy settings are
/// https_proxy and no_proxy, in either case, as of the construction of the service.
///
/// The serial queue of a session is a thread. The thread starts with the first operation and ends
/// when the session has nothing left to do.
///
/// The trust store is made while the first connection opens, on the session's thread. Where all
/// authorities of the system have to be read at once, a thread makes the trust store at the
/// construction of the service.
///
/// Destruction aborts the open connections without a close handshake and joins the threads.
/// Handlers and delegates are never called after the destruction. Sessions and tasks may outlive
/// the service; their operations do nothing then.
class BeastWebSocketService final : public platform::WebSocketService {
  public:
    /// `log` is written to on any thread until the destruction of the service.
    explicit BeastWebSocketService(platform::Log& log, WebSocketOptions options = {});
    ~BeastWebSocketService() override;

    std::shared_ptr<platform::WebSocketSession> makeSession(
        std::shared_ptr<platform::WebSocketSessionDelegate> delegate) override;

  private:
    const std::shared_ptr<ThreadRegistry> threads_;
    const std::shared_ptr<SessionContext> context_;
    std::vector<std::weak_ptr<BeastWebSocketSession>> sessions_;
};

}  // namespace tarvik::linuxdesktop
