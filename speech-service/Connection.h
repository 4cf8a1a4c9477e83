// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <memory>

#include "speech-service/OpenConnection.h"
#include "speech-service/ServerContext.h"
#include "speech-service/Stream.h"

namespace tarvik::service {

/// A connection from its acceptance to its only request. The connection refuses the request or
/// upgrades to a stream. One timeout covers TLS handshake, request and the wait for room.
///
/// On the server's executor only. Pending operations hold the connection; `context` must outlive
/// the connection.
class Connection : public OpenConnection, public std::enable_shared_from_this<Connection> {
  public:
    Connection(boost::asio::ip::tcp::socket socket, ServerContext& context);

    /// Starts the TLS handshake.
    void start();

    /// Closes the socket at once.
    void goAway() override;

  private:
    void startTimeout();
    void onTimeout();
    void abort();
    void onTlsHandshake(boost::beast::error_code error);
    void onRequest(boost::beast::error_code error);
    void admit();
    void waitForRoom();
    void upgradeToStream();
    void refuseForLackOfRoom();
    void refuse(const Error& error);
    void answer(const Error& error, Response response);

    ServerContext& context_;
    network::TlsStream socket_;
    boost::asio::steady_timer timeoutTimer_;
    boost::beast::flat_buffer incoming_;
    boost::beast::http::request_parser<boost::beast::http::empty_body> parser_;
    Response response_;
    Handshake handshake_;
    bool isWaitingForRoom_ = false;
};

}  // namespace tarvik::service
