// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>

#include "base/Time.h"
#include "platform/linux/websocket/HappyEyeballs.h"
#include "tests/linux/websocket/Listener.h"

namespace tarvik::tests {

namespace {

using boost::asio::ip::tcp;

struct Outcome {
    boost::system::error_code error;
    std::optional<tcp::endpoint> winner;
    Seconds duration{0};
};

/// Connects, and calls `meanwhile` half a second after the start.
Outcome connectToAny(
    const std::vector<tcp::endpoint>& endpoints, std::function<void()> meanwhile = [] {}) {
    boost::asio::io_context context;
    Outcome result;
    boost::asio::steady_timer timer(context, std::chrono::milliseconds(500));
    timer.async_wait([&](const boost::system::error_code& error) {
        if (!error) {
            meanwhile();
        }
    });
    const auto start = std::chrono::steady_clock::now();
    const auto connector = std::make_shared<linuxdesktop::HappyEyeballs>(context, endpoints);
    connector->start([&](const boost::system::error_code& error, const tcp::socket& socket) {
        result.error = error;
        if (!error) {
            result.winner = socket.remote_endpoint();
        }
        result.duration = std::chrono::steady_clock::now() - start;
        timer.cancel();
    });
    context.run();
    return result;
}

tcp::endpoint endpointAt(const char* address, std::uint16_t port) {
    return {boost::asio::ip::make_address(address), port};
}

TEST(HappyEyeballs, ARefusalStartsTheNextAttemptAtOnce) {
    const Listener good("127.0.0.1");
    const auto target = endpointAt("127.0.0.1", good.port());
    const Outcome result = connectToAny({endpointAt("::1", good.port()), target});
    EXPECT_EQ(result.winner, target);
    EXPECT_LT(result.duration, Seconds(0.25));
}

TEST(HappyEyeballs, ASilentAddressCostsAQuarterOfASecond) {
    const Listener unresponsive("127.0.0.1", 0, true);
    const Listener good("::1");
    const auto silent = endpointAt("127.0.0.1", unresponsive.port());
    const auto target = endpointAt("::1", good.port());
    // The families take turns, so the second silent one is tried after the good one.
    const Outcome result = connectToAny({silent, silent, target});
    EXPECT_EQ(result.winner, target);
    EXPECT_GE(result.duration, Seconds(0.25));
    EXPECT_LT(result.duration, Seconds(0.5));
}

TEST(HappyEyeballs, ASlowAddressAfterARefusalIsWaitedFor) {
    Listener slow("127.0.0.1", 0, true);
    const auto target = endpointAt("127.0.0.1", slow.port());
    const auto refused = endpointAt("::1", slow.port());
    // The kernel repeats the attempt a second after the first one, which nobody has answered.
    const Outcome result = connectToAny({refused, target}, [&] { slow.emptyBacklog(); });
    EXPECT_EQ(result.winner, target) << result.error.message();
    EXPECT_GE(result.duration, Seconds(0.5));
}

TEST(HappyEyeballs, TheLastRefusalIsTheFailure) {
    std::uint16_t port = 0;
    {
        const Listener gone("127.0.0.1");
        port = gone.port();
    }
    EXPECT_EQ(connectToAny({endpointAt("::1", port), endpointAt("127.0.0.1", port)}).error,
              boost::asio::error::connection_refused);
    EXPECT_TRUE(connectToAny({}).error);
}

}  // namespace

}  // namespace tarvik::tests
