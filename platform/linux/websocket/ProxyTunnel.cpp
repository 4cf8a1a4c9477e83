// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/ProxyTunnel.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <memory>
#include <utility>

#include "platform/linux/websocket/Authority.h"
#include "platform/linux/websocket/LogText.h"
#include "platform/linux/websocket/NetworkError.h"

namespace tarvik::linuxdesktop {

namespace {

namespace http = boost::beast::http;
using boost::system::error_code;

constexpr unsigned httpVersion = 11;

class Tunnel final : public std::enable_shared_from_this<Tunnel> {
  public:
    Tunnel(boost::asio::ip::tcp::socket& socket, const Proxy& proxy, const std::string& target,
           std::function<void(std::optional<Error>)> handler)
        : socket_(socket),
          name_("The proxy " + hostWithPort(proxy.host, proxy.port)),
          request_(http::verb::connect, target, httpVersion),
          handler_(std::move(handler)) {
        request_.set(http::field::host, target);
        if (!proxy.authorization.empty()) {
            request_.set(http::field::proxy_authorization, proxy.authorization);
        }
        // A successful reply to CONNECT has no body. The bytes after its header belong to the
        // tunnel.
        reply_.skip(true);
    }

    void start() {
        http::async_write(socket_, request_,
                          [self = shared_from_this()](const error_code& error, std::size_t) {
                              error ? self->fail(error) : self->readReply();
                          });
    }

  private:
    void readReply() {
        http::async_read_header(socket_, buffer_, reply_,
                                [self = shared_from_this()](const error_code& error, std::size_t) {
                                    error ? self->fail(error) : self->onReply();
                                });
    }

    void onReply() {
        const auto& reply = reply_.get();
        if (http::to_status_class(reply.result()) == http::status_class::successful) {
            handler_(std::nullopt);
            return;
        }
        handler_(Error{
            static_cast<int>(reply.result_int()),
            name_ + " refused to connect: " + httpStatusText(reply.result_int(), reply.reason())});
    }

    void fail(const error_code& error) { handler_(networkError(name_ + " did not answer", error)); }

    boost::asio::ip::tcp::socket& socket_;
    const std::string name_;
    http::request<http::empty_body> request_;
    boost::beast::flat_buffer buffer_;
    http::response_parser<http::empty_body> reply_;
    const std::function<void(std::optional<Error>)> handler_;
};

}  // namespace

void openTunnel(boost::asio::ip::tcp::socket& socket, const Proxy& proxy, const std::string& target,
                std::function<void(std::optional<Error>)> handler) {
    std::make_shared<Tunnel>(socket, proxy, target, std::move(handler))->start();
}

}  // namespace tarvik::linuxdesktop
