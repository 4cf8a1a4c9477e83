// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
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

    HappyEyeballs(boost::asio::io_context& context,
                  std::vector<boost::asio::ip::tcp::endpoint> endpoints);

    /// Starts the first attempt. `handler` is called at most once, never inside this call. May be
    /// called once.
    void start(ConnectHandler handler);
    /// Ends all attempts without a call of the handler.
    void cancel();

  private:
    void startNext();
    void startNextLater();
    void onAttempt(std::size_t index, const boost::system::error_code& error);
    void finish(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);

    boost::asio::io_context& context_;
    const std::vector<boost::asio::ip::tcp::endpoint> endpoints_;
    std::vector<boost::asio::ip::tcp::socket> attempts_;
    std::size_t failedCount_ = 0;
    boost::asio::steady_timer attemptTimer_;
    ConnectHandler handler_;
};

}  // namespace tarvik::linuxdesktop
