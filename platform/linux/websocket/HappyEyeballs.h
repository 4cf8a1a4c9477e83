// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tarvik::linuxdesktop {

/// Connects to the first of several addresses that accepts (RFC 8305, "Happy Eyeballs").
///
/// The next attempt starts when all running attempts have failed, or 250 ms after the last start.
/// The address families alternate. Everything happens on the context's thread.
class HappyEyeballs final : public std::enable_shared_from_this<HappyEyeballs> {
  public:
    /// The connected socket, or the error of the last attempt.
    using ConnectHandler =
        std::function<void(boost::system::error_code, boost::asio::ip::tcp::socket)>;

    explicit HappyEyeballs(boost::asio::io_context& context);

    using EarlyHandler = std::function<void(boost::asio::ip::tcp::socket)>;

    /// Starts an attempt before the addresses are known. If it connects before start(),
    /// `onConnected` gets the socket, and the attempt is over. Without `onConnected` the connection
    /// waits for start(). May be called once, before start().
    void startEarly(const boost::asio::ip::tcp::endpoint& endpoint, EarlyHandler onConnected = {});
    /// Starts the first attempt. An early attempt is the first one if its address is among
    /// `endpoints`; otherwise the early attempt ends unused. `handler` is called at most once,
    /// never inside this call. May be called once.
    void start(const std::vector<boost::asio::ip::tcp::endpoint>& endpoints,
               ConnectHandler handler);
    /// Ends all attempts without a call of the handler.
    void cancel();

  private:
    using Attempt = std::shared_ptr<boost::asio::ip::tcp::socket>;

    void begin(const boost::asio::ip::tcp::endpoint& endpoint);
    void startNext();
    void startNextLater();
    void onAttempt(const Attempt& attempt, const boost::system::error_code& error);
    void closeAttempts();
    void finish(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);
    void postFinish(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);

    boost::asio::io_context& context_;
    std::optional<boost::asio::ip::tcp::endpoint> earlyEndpoint_;
    EarlyHandler onEarlyConnected_;
    /// The early attempt, connected before start().
    Attempt connectedEarly_;
    std::deque<boost::asio::ip::tcp::endpoint> untried_;
    /// The running attempts.
    std::vector<Attempt> attempts_;
    boost::system::error_code lastError_;
    std::size_t startCount_ = 0;
    boost::asio::steady_timer::time_point lastStart_;
    boost::asio::steady_timer attemptTimer_;
    ConnectHandler handler_;
};

}  // namespace tarvik::linuxdesktop
