// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "base/Error.h"
#include "base/Result.h"
#include "platform/WebSocket.h"
#include "platform/linux/websocket/FrameStream.h"

namespace tarvik::linuxdesktop {

/// A web socket on a connected TCP socket. Everything happens on the socket's thread. No handler is
/// called inside the operation that takes the handler.
class Connection final : public std::enable_shared_from_this<Connection> {
  public:
    using Stream = boost::beast::websocket::stream<FrameStream>;
    /// A message, or the size of one beyond platform::maxReceivedMessageSize, which is not kept.
    using Received = std::variant<platform::WebSocketMessage, std::uint64_t>;
    using ReadHandler = std::function<void(Result<Received>)>;
    using WriteHandler = std::function<void(std::optional<Error>)>;
    using CloseHandler = std::function<void(int code, std::string reason)>;

    Connection(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context,
               std::chrono::milliseconds closeTimeout);

    /// The stream for the opening handshakes.
    Stream& stream() { return stream_; }

    /// Prepares the open web socket for read() and write(). To be called after the handshakes.
    /// `onClose` is called when the service has sent a close frame. The connection completes the
    /// close handshake by itself.
    void open(CloseHandler onClose);
    /// Reads one message. At most one read may be pending.
    void read(ReadHandler handler);
    /// Writes one message. At most one write may be pending.
    void write(platform::WebSocketMessage message, WriteHandler handler);
    /// Starts the close handshake with `code` unless the service has started it. The connection is
    /// aborted after the handshake, after the close timeout, or at once if the web socket is not
    /// open.
    void close(int code);
    /// Closes the socket at once. Pending operations fail.
    void abort();

    /// Whether `error` is Asio's operation_aborted, which only follows from another error.
    static bool isOperationAborted(const Error& error);

  private:
    void startCloseTimer();
    void readSome(ReadHandler handler);
    void onRead(const boost::system::error_code& error, std::size_t size, ReadHandler handler);

    Stream stream_;
    boost::asio::steady_timer closeTimer_;
    const std::chrono::milliseconds closeTimeout_;
    bool hasCloseFrame_ = false;
    std::string payload_;
    /// The bytes of the present message so far.
    std::uint64_t messageSize_ = 0;
    std::optional<
        boost::asio::dynamic_string_buffer<char, std::char_traits<char>, std::allocator<char>>>
        buffer_;
};

}  // namespace tarvik::linuxdesktop
