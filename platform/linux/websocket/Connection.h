#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Error.h"
#include "base/Result.h"
#include "platform/WebSocket.h"
#include "platform/linux/websocket/FrameStream.h"

namespace tarvik::linuxdesktop {

/// A web socket on a connected socket. Everything happens on the socket's thread, and no handler
/// comes inside the call that was given it.
class Connection final : public std::enable_shared_from_this<Connection> {
  public:
    using Stream = boost::beast::websocket::stream<FrameStream>;
    using ReadHandler = std::function<void(Result<platform::WebSocketMessage>)>;
    using WriteHandler = std::function<void(std::optional<Error>)>;
    using CloseHandler = std::function<void(int code, std::string reason)>;

    /// The longest message that is read; a longer one ends the connection.
    static constexpr std::size_t longestMessage = std::size_t{32} << 20;

    Connection(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context,
               std::chrono::milliseconds closeTimeout);

    /// For the opening handshakes.
    Stream& stream() { return stream_; }

    /// To be called once the handshakes are done. `onClose` comes when the service has sent a close
    /// frame; the answer and the farewell follow by themselves.
    void open(CloseHandler onClose);
    /// Reads one message. One at a time.
    void read(ReadHandler handler);
    /// Writes one message. One at a time.
    void write(platform::WebSocketMessage message, WriteHandler handler);
    /// Sends a close frame where that is still possible, and ends the connection by the farewell's
    /// limit at the latest.
    void close(int code);
    /// Ends the connection at once; what is under way fails.
    void abort();

    /// True when `error` only says that something else has ended the connection.
    static bool isAftermath(const Error& error);

  private:
    void startCloseTimer();
    void onRead(const boost::system::error_code& failure, const ReadHandler& handler);

    Stream stream_;
    boost::asio::steady_timer closeTimer_;
    const std::chrono::milliseconds closeTimeout_;
    bool hasCloseFrame_ = false;
    std::string payload_;
    std::optional<
        boost::asio::dynamic_string_buffer<char, std::char_traits<char>, std::allocator<char>>>
        buffer_;
};

}  // namespace tarvik::linuxdesktop
