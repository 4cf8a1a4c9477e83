#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <memory>

#include "speech-service/DecoderPool.h"
#include "speech-service/ServerOptions.h"
#include "speech-service/Stream.h"
#include "speech-service/StreamRegistry.h"

namespace tarvik::service {

/// What the connections of one server share.
struct ServerContext {
    boost::asio::ssl::context tls;
    ServerOptions options;
    std::shared_ptr<DecoderPool> decoders;
    StreamRegistry streams;
    /// Connections that have not become a stream yet.
    StreamRegistry connections;
};

/// A connection from its acceptance to its one request, which is refused or becomes a stream.
///
/// On the server's executor only. It keeps itself alive; `context` must outlive it.
class Connection : public OpenConnection, public std::enable_shared_from_this<Connection> {
  public:
    Connection(boost::asio::ip::tcp::socket socket, ServerContext& context);

    /// Begins with the TLS handshake.
    void start();

    void goAway() override;

  private:
    void limitTime();
    void cut();
    void onSecured(boost::beast::error_code error);
    void onRequest(boost::beast::error_code error);
    void becomeStream(const StreamQuery& query);
    void refuse(const Error& error);
    void answer(const Error& error, Response response);

    ServerContext& context_;
    network::TlsStream socket_;
    boost::asio::steady_timer limit_;
    boost::beast::flat_buffer incoming_;
    boost::beast::http::request_parser<boost::beast::http::empty_body> parser_;
    Response response_;
};

}  // namespace tarvik::service
