// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/WebSocket.h"
#include "platform/linux/websocket/Connection.h"
#include "platform/linux/websocket/HappyEyeballs.h"
#include "platform/linux/websocket/SerialThread.h"
#include "platform/linux/websocket/SessionContext.h"
#include "platform/linux/websocket/WebSocketUrl.h"

namespace tarvik::linuxdesktop {

/// Opens one web socket: name lookup, TCP connection, proxy tunnel, TLS handshake, upgrade. All
/// steps share the timeout of the request. Everything happens on the session's thread.
///
/// The TCP connection to the last address of the host starts with the name lookup, and saves a
/// round trip. The TLS handshake follows, also while the lookup takes longer. The request is sent
/// only if the lookup names this address again. Nothing is sent to a proxy before that.
class Connector final : public std::enable_shared_from_this<Connector> {
  public:
    struct Connected {
        std::shared_ptr<Connection> connection;
        /// The subprotocol that the service selected, or empty.
        std::string protocol;
    };
    using ConnectHandler = std::function<void(Result<Connected>)>;

    Connector(std::shared_ptr<SerialThread> thread, std::shared_ptr<SessionContext> context,
              platform::UrlRequest request);

    /// Starts the first step. `handler` is called at most once, possibly inside this call, and is
    /// destroyed after that. May be called once.
    void start(ConnectHandler handler);
    /// Aborts the current step and destroys the handler without calling it.
    void cancel();

  private:
    std::optional<Error> prepare();
    void startTimeout();
    void resolve(const std::string& host, std::uint16_t port);
    void onLookedUp(const std::string& destination,
                    const std::vector<boost::asio::ip::tcp::endpoint>& endpoints);
    void connectToAny(const std::string& destination,
                      const std::vector<boost::asio::ip::tcp::endpoint>& endpoints);
    void onConnected(const std::string& destination, boost::asio::ip::tcp::socket socket);
    void openProxyTunnel();
    void handshakeTls();
    void onTlsHandshake(const boost::system::error_code& error);
    void handshakeWebSocket();
    void onWebSocketHandshake(const boost::system::error_code& error);
    void dropConnection();
    void reportKeyAnswer(bool isKeyAccepted);
    void fail(Error error);
    void finish(Result<Connected> result);

    const std::shared_ptr<SerialThread> thread_;
    const std::shared_ptr<SessionContext> context_;
    const platform::UrlRequest request_;
    WebSocketUrl url_;
    std::optional<Proxy> proxy_;
    boost::asio::steady_timer timeoutTimer_;
    std::shared_ptr<HappyEyeballs> happyEyeballs_;
    std::shared_ptr<Connection> connection_;
    /// The address of the connection until the lookup has named it.
    std::optional<boost::asio::ip::tcp::endpoint> unconfirmed_;
    bool isTlsReady_ = false;
    boost::beast::websocket::response_type response_;
    ConnectHandler handler_;
};

}  // namespace tarvik::linuxdesktop
