// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>

#include "base/Time.h"
#include "platform/linux/websocket/HappyEyeballs.h"
#include "tests/linux/websocket/Listener.h"
#include "tests/support/Attempts.h"

namespace tarvik::tests {

namespace {

using boost::asio::ip::tcp;

// Enough for an attempt on loopback, and shorter than the delay between two attempts.
constexpr std::chrono::milliseconds earlyAttemptTime{100};

struct Outcome {
    boost::system::error_code error;
    std::optional<tcp::endpoint> winner;
    Seconds duration{0};
};

/// Connects, and calls `meanwhile` half a second after the start. An attempt at `early` starts
/// first and ends, if it can, before `endpoints` are known.
Outcome connectToAny(
    const std::vector<tcp::endpoint>& endpoints, std::function<void()> meanwhile = [] {},
    const std::optional<tcp::endpoint>& early = std::nullopt) {
    boost::asio::io_context context;
    const auto connector = std::make_shared<linuxdesktop::HappyEyeballs>(context);
    if (early) {
        connector->startEarly(*early);
        context.run_for(earlyAttemptTime);
        context.restart();
    }
    Outcome result;
    boost::asio::steady_timer timer(context, std::chrono::milliseconds(500));
    timer.async_wait([&](const boost::system::error_code& error) {
        if (!error) {
            meanwhile();
        }
    });
    const auto start = std::chrono::steady_clock::now();
    connector->start(endpoints,
                     [&](const boost::system::error_code& error, const tcp::socket& socket) {
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
    EXPECT_TRUE(isWithin(Seconds(0.25), [&] {
        const Outcome result = connectToAny({endpointAt("::1", good.port()), target});
        EXPECT_EQ(result.winner, target);
        return result.duration;
    }));
}

TEST(HappyEyeballs, ASilentAddressCostsAQuarterOfASecond) {
    const Listener unresponsive("127.0.0.1", 0, true);
    const Listener good("::1");
    const auto silent = endpointAt("127.0.0.1", unresponsive.port());
    const auto target = endpointAt("::1", good.port());
    // The families take turns, so the second silent one is tried after the good one.
    EXPECT_TRUE(isWithin(Seconds(0.5), [&] {
        const Outcome result = connectToAny({silent, silent, target});
        EXPECT_EQ(result.winner, target);
        EXPECT_GE(result.duration, Seconds(0.25));
        return result.duration;
    }));
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

TEST(HappyEyeballs, AnEarlyConnectionIsUsedWhenItsAddressIsAmongTheAddresses) {
    Listener good("127.0.0.1");
    const auto early = endpointAt("127.0.0.1", good.port());
    const Outcome result = connectToAny(
        {endpointAt("::1", good.port()), early}, [] {}, early);
    EXPECT_EQ(result.winner, early);
    good.accept();
    EXPECT_FALSE(good.hasConnection());
}

TEST(HappyEyeballs, AnEarlyConnectionToAnotherAddressIsNotUsed) {
    Listener old("127.0.0.1");
    const Listener present("::1");
    const auto target = endpointAt("::1", present.port());
    const Outcome result = connectToAny(
        {target}, [] {}, endpointAt("127.0.0.1", old.port()));
    EXPECT_EQ(result.winner, target);
    EXPECT_TRUE(old.accept().readEnd());
}

TEST(HappyEyeballs, AnEarlyAttemptThatWasRefusedIsNotRepeated) {
    const Listener good("::1");
    const auto refused = endpointAt("127.0.0.1", good.port());
    const auto target = endpointAt("::1", good.port());
    EXPECT_EQ(connectToAny(
                  {refused, target}, [] {}, refused)
                  .winner,
              target);
    EXPECT_EQ(connectToAny(
                  {refused}, [] {}, refused)
                  .error,
              boost::asio::error::connection_refused);
}

TEST(HappyEyeballs, ASilentEarlyAttemptDoesNotDelayTheNextOneTwice) {
    const Listener unresponsive("127.0.0.1", 0, true);
    const Listener good("::1");
    const auto silent = endpointAt("127.0.0.1", unresponsive.port());
    const auto target = endpointAt("::1", good.port());
    // The early attempt was under way for a tenth of a second before the start.
    EXPECT_TRUE(isWithin(Seconds(0.25), [&] {
        const Outcome result = connectToAny(
            {silent, target}, [] {}, silent);
        EXPECT_EQ(result.winner, target);
        return result.duration;
    }));
}

TEST(HappyEyeballs, AnEarlyAttemptThatIsAloneIsWaitedFor) {
    Listener slow("127.0.0.1", 0, true);
    const auto target = endpointAt("127.0.0.1", slow.port());
    const Outcome result = connectToAny(
        {target}, [&] { slow.emptyBacklog(); }, target);
    EXPECT_EQ(result.winner, target) << result.error.message();
}

TEST(HappyEyeballs, CancellingAnEarlyConnectionClosesIt) {
    Listener good("127.0.0.1");
    boost::asio::io_context context;
    const auto connector = std::make_shared<linuxdesktop::HappyEyeballs>(context);
    connector->startEarly(endpointAt("127.0.0.1", good.port()));
    context.run();
    connector->cancel();
    EXPECT_TRUE(good.accept().readEnd());
}

}  // namespace

}  // namespace tarvik::tests
