#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <vector>

namespace tarvik::linuxdesktop {

/// Connects to whichever of several addresses answers first (RFC 8305): another attempt begins when
/// the last one has failed or has been silent for 250 ms, the address families taking turns.
/// Everything happens on the context's thread.
class AddressRace final : public std::enable_shared_from_this<AddressRace> {
  public:
    /// The connected socket, or the last failure.
    using Completion = std::function<void(boost::system::error_code, boost::asio::ip::tcp::socket)>;

    AddressRace(boost::asio::io_context& context,
                std::vector<boost::asio::ip::tcp::endpoint> endpoints);

    /// `completion` comes at most once, not inside this call. Once.
    void start(Completion completion);
    /// Ends all attempts; no completion comes any more.
    void cancel();

  private:
    void startNext();
    void onAttempt(std::size_t index, const boost::system::error_code& failure);
    void finish(const boost::system::error_code& failure, boost::asio::ip::tcp::socket socket);

    boost::asio::io_context& context_;
    const std::vector<boost::asio::ip::tcp::endpoint> endpoints_;
    std::vector<boost::asio::ip::tcp::socket> attempts_;
    std::size_t failures_ = 0;
    boost::asio::steady_timer nextAttempt_;
    Completion completion_;
};

}  // namespace tarvik::linuxdesktop
