#pragma once

#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/WebSocket.h"
#include "platform/linux/websocket/AddressRace.h"
#include "platform/linux/websocket/Connection.h"
#include "platform/linux/websocket/SerialThread.h"
#include "platform/linux/websocket/SessionContext.h"
#include "platform/linux/websocket/WebSocketUrl.h"

namespace tarvik::linuxdesktop {

/// The way from a request to an open web socket: name, address, proxy, TLS, upgrade, all within the
/// request's limit of time. Everything happens on the session's thread.
class Opening final : public std::enable_shared_from_this<Opening> {
  public:
    struct Opened {
        std::shared_ptr<Connection> connection;
        /// The subprotocol that the service chose, or empty.
        std::string protocol;
    };
    using Completion = std::function<void(Result<Opened>)>;

    Opening(std::shared_ptr<SerialThread> thread, std::shared_ptr<const SessionContext> context,
            platform::UrlRequest request);

    /// `completion` comes at most once, perhaps inside this call. Once.
    void start(Completion completion);
    /// Gives up; no completion comes any more.
    void cancel();

  private:
    std::optional<Error> prepare();
    void limitTime();
    void connectTo(const std::string& host, std::uint16_t port);
    void race(const std::string& where, std::vector<boost::asio::ip::tcp::endpoint> endpoints);
    void onConnected(boost::asio::ip::tcp::socket socket);
    void tunnel();
    void handshakeTls();
    void onTlsHandshake(const boost::system::error_code& failure);
    void handshakeWebSocket();
    void onWebSocketHandshake(const boost::system::error_code& failure);
    void fail(Error error);
    void finish(Result<Opened> result);

    const std::shared_ptr<SerialThread> thread_;
    const std::shared_ptr<const SessionContext> context_;
    const platform::UrlRequest request_;
    WebSocketUrl url_;
    std::optional<Proxy> proxy_;
    boost::asio::steady_timer limit_;
    std::shared_ptr<AddressRace> race_;
    std::shared_ptr<Connection> connection_;
    boost::beast::websocket::response_type response_;
    Completion completion_;
};

}  // namespace tarvik::linuxdesktop
