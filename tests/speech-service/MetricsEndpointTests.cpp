// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include "tests/speech-service/ListenClient.h"
#include "tests/speech-service/RunningServer.h"
#include "tests/speech-service/ScriptedEngine.h"

namespace tarvik::service {

namespace {

/// The response to a GET of `target` on the loopback address.
std::string get(std::uint16_t port, const std::string& target) {
    boost::asio::io_context context;
    boost::asio::ip::tcp::socket socket(context);
    socket.connect({boost::asio::ip::address_v4::loopback(), port});
    boost::asio::write(
        socket, boost::asio::buffer("GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n"));
    std::string response;
    boost::system::error_code end;
    boost::asio::read(socket, boost::asio::dynamic_buffer(response), end);
    return response;
}

ServerOptions withMetrics() {
    ServerOptions options;
    options.metricsPort = 0;
    options.maxStreams = 3;
    return options;
}

TEST(MetricsEndpoint, TellsWhatTheServiceDoes) {
    RunningServer server(withMetrics(), std::make_shared<ScriptedEngine>());
    ListenClient client(server.port(), server.authority());
    ASSERT_TRUE(client.openAt(16000));
    const std::string response = get(server.metricsPort(), "/metrics");
    EXPECT_TRUE(response.starts_with("HTTP/1.1 200 OK\r\n"));
    EXPECT_NE(response.find("\r\nContent-Type: text/plain; version=0.0.4\r\n"), std::string::npos);
    EXPECT_NE(response.find("\ntarvik_streams_open 1\n"), std::string::npos);
    EXPECT_NE(response.find("\ntarvik_streams_limit 3\n"), std::string::npos);
}

TEST(MetricsEndpoint, HasNothingElse) {
    RunningServer server(withMetrics(), std::make_shared<ScriptedEngine>());
    EXPECT_TRUE(get(server.metricsPort(), "/").starts_with("HTTP/1.1 404 Not Found\r\n"));
}

}  // namespace

}  // namespace tarvik::service
