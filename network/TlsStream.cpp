// SPDX-License-Identifier: MIT

#include "network/TlsStream.h"

#include <boost/asio/error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/teardown.hpp>

namespace tarvik::network {

using boost::system::error_code;

TlsStream::TlsStream(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context)
    : next_(std::move(socket), context) {
    error_code ignored;  // Without the option bytes leave later, but they leave.
    next_.next_layer().set_option(boost::asio::ip::tcp::no_delay(true), ignored);
}

void TlsStream::read(Buffers buffers, TransferHandler handler) {
    const Buffers target = buffers;  // The lambda below takes `buffers` over.
    next_.async_read_some(target,
                          [this, buffers = std::move(buffers), handler = std::move(handler)](
                              error_code error, std::size_t size) {
                              if (error == boost::asio::ssl::error::stream_truncated) {
                                  error = boost::asio::error::eof;
                              }
                              onRead(buffers, size);
                              handler(error, size);
                          });
}

void TlsStream::write(const std::vector<boost::asio::const_buffer>& buffers,
                      TransferHandler handler) {
    next_.async_write_some(buffers, std::move(handler));
}

void TlsStream::startTeardown(boost::beast::role_type role, TeardownHandler handler) {
    onTeardown();
    using boost::beast::async_teardown;
    // An error of the teardown would hide the reason for the teardown.
    async_teardown(role, next_,
                   [handler = std::move(handler)](const error_code& /*error*/) { handler({}); });
}

}  // namespace tarvik::network
