// SPDX-License-Identifier: MIT

#include "speech-service/MetricsEndpoint.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <chrono>

namespace tarvik::service {

namespace beast = boost::beast;
namespace http = beast::http;
using boost::asio::ip::tcp;

namespace {

constexpr std::chrono::seconds timeout{5};

/// One request and its response. The pending operation holds the exchange.
class Exchange : public std::enable_shared_from_this<Exchange> {
  public:
    Exchange(tcp::socket socket, const std::function<std::string()>& text)
        : stream_(std::move(socket)), text_(text) {}

    void start() {
        stream_.expires_after(timeout);
        http::async_read(stream_, buffer_, request_,
                         [self = shared_from_this()](beast::error_code error, std::size_t) {
                             if (!error) {
                                 self->answer();
                             }
                         });
    }

  private:
    void answer() {
        const bool isKnown =
            request_.method() == http::verb::get && request_.target() == "/metrics";
        response_.version(request_.version());
        response_.result(isKnown ? http::status::ok : http::status::not_found);
        response_.set(http::field::content_type, "text/plain; version=0.0.4");
        response_.keep_alive(false);
        response_.body() = isKnown ? text_() : "The metrics are on /metrics\n";
        response_.prepare_payload();
        http::async_write(stream_, response_,
                          [self = shared_from_this()](beast::error_code, std::size_t) {
                              // With or without an error, nothing is left to do.
                              beast::error_code ignored;
                              self->stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
                          });
    }

    beast::tcp_stream stream_;
    std::function<std::string()> text_;
    beast::flat_buffer buffer_;
    http::request<http::empty_body> request_;
    http::response<http::string_body> response_;
};

}  // namespace

MetricsEndpoint::MetricsEndpoint(boost::asio::io_context& context,
                                 std::function<std::string()> text)
    : acceptor_(context), text_(std::move(text)) {}

Result<std::unique_ptr<MetricsEndpoint>> MetricsEndpoint::create(
    boost::asio::io_context& context, std::uint16_t port, std::function<std::string()> text) {
    std::unique_ptr<MetricsEndpoint> endpoint(new MetricsEndpoint(context, std::move(text)));
    tcp::acceptor& acceptor = endpoint->acceptor_;
    boost::system::error_code error;
    acceptor.open(tcp::v4(), error);
    if (!error) {
        acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    }
    if (!error) {
        acceptor.bind({boost::asio::ip::address_v4::loopback(), port}, error);
    }
    if (!error) {
        acceptor.listen(tcp::acceptor::max_listen_connections, error);
    }
    if (error) {
        return Error{error.value(), "The metrics' port " + std::to_string(port) +
                                        " cannot be listened on: " + error.message()};
    }
    endpoint->port_ = acceptor.local_endpoint().port();
    endpoint->accept();
    return endpoint;
}

void MetricsEndpoint::accept() {
    acceptor_.async_accept([this](boost::system::error_code error, tcp::socket socket) {
        if (error == boost::asio::error::operation_aborted) {
            return;
        }
        if (!error) {
            std::make_shared<Exchange>(std::move(socket), text_)->start();
        }
        accept();
    });
}

void MetricsEndpoint::stop() {
    boost::system::error_code ignored;  // Closing releases the descriptor even with an error.
    acceptor_.close(ignored);
}

}  // namespace tarvik::service
