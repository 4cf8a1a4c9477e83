// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>

#include "network/TlsStream.h"
#include "tests/linux/websocket/Listener.h"

namespace tarvik::tests {

namespace {

using boost::asio::ip::tcp;

TEST(TlsStream, SendsWithoutNaglesAlgorithm) {
    const Listener listener("127.0.0.1");
    boost::asio::io_context context;
    tcp::socket socket(context);
    socket.connect({boost::asio::ip::address_v4::loopback(), listener.port()});
    boost::asio::ssl::context tls(boost::asio::ssl::context::tls);
    network::TlsStream stream(std::move(socket), tls);
    tcp::no_delay option;
    stream.next_layer().next_layer().get_option(option);
    EXPECT_TRUE(option.value());
}

}  // namespace

}  // namespace tarvik::tests
