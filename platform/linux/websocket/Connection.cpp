// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/Connection.h"

#include <netinet/tcp.h>

#include <boost/asio/detail/socket_option.hpp>
#include <boost/asio/error.hpp>
#include <boost/beast/core/stream_traits.hpp>
#include <utility>

#include "platform/linux/websocket/NetworkError.h"

namespace tarvik::linuxdesktop {

namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using boost::system::error_code;
using platform::WebSocketMessage;

// A frame header and a payload of this size fit into one TLS record, which one system call sends.
// Beast joins buffers up to 16 KiB, and a header has up to 14 bytes.
constexpr std::size_t writeBufferSize = 16 * 1024 - 16;

// In bytes; a message is read in pieces of at most this size.
constexpr std::size_t maxPieceSize = 64 * 1024;

// In bytes. Half a second of sound at 16 kHz.
constexpr int maxUnsentBytes = 16 * 1024;
using NotSentLowWater = boost::asio::detail::socket_option::integer<IPPROTO_TCP, TCP_NOTSENT_LOWAT>;

// Stands for a close frame without a code (RFC 6455, 7.1.5).
constexpr int noStatusReceived = 1005;

Error lostConnection(const error_code& error) {
    return networkError("The connection to the service was lost", error);
}

}  // namespace

Connection::Connection(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context,
                       std::chrono::milliseconds closeTimeout)
    : stream_(std::move(socket), context),
      closeTimer_(stream_.get_executor()),
      closeTimeout_(closeTimeout) {
    stream_.binary(true);
    stream_.auto_fragment(false);
    stream_.write_buffer_bytes(writeBufferSize);
    // A message beyond the limit is dropped, and must not end the connection.
    stream_.read_message_max(0);
    // Bytes that cannot leave wait here and not in the kernel, which would take minutes of sound
    // and report it as sent. Without the option the log only tells later of sound that waits.
    error_code ignored;
    beast::get_lowest_layer(stream_).set_option(NotSentLowWater(maxUnsentBytes), ignored);
}

void Connection::open(CloseHandler onClose) {
    // This object owns the stream, so a plain pointer is safe. Beast's own timeouts stay off: they
    // do not cover the close after a protocol error, and they wake an idle connection up.
    stream_.next_layer().setOnTeardown([this] { startCloseTimer(); });
    stream_.control_callback(
        [this, onClose = std::move(onClose)](websocket::frame_type kind, beast::string_view) {
            if (kind != websocket::frame_type::close) {
                return;
            }
            hasCloseFrame_ = true;
            startCloseTimer();
            const websocket::close_reason& reason = stream_.reason();
            onClose(reason.code == websocket::close_code::none ? noStatusReceived : reason.code,
                    std::string(reason.reason.data(), reason.reason.size()));
        });
}

void Connection::read(ReadHandler handler) {
    payload_.clear();
    messageSize_ = 0;
    readSome(std::move(handler));
}

void Connection::readSome(ReadHandler handler) {
    buffer_.emplace(payload_);
    stream_.async_read_some(*buffer_, maxPieceSize,
                            [self = shared_from_this(), handler = std::move(handler)](
                                const error_code& error, std::size_t size) mutable {
                                self->onRead(error, size, std::move(handler));
                            });
}

void Connection::onRead(const error_code& error, std::size_t size, ReadHandler handler) {
    if (error) {
        abort();
        handler(lostConnection(error));
        return;
    }
    messageSize_ += size;
    const bool isTooLong = messageSize_ > platform::maxReceivedMessageSize;
    if (isTooLong) {
        payload_.clear();
    }
    if (!stream_.is_message_done()) {
        readSome(std::move(handler));
        return;
    }
    const WebSocketMessage::Kind kind = stream_.next_layer().kinds().take();
    if (isTooLong) {
        handler(Received(messageSize_));
        return;
    }
    handler(Received(WebSocketMessage{kind, std::exchange(payload_, {})}));
}

void Connection::write(WebSocketMessage message, WriteHandler handler) {
    stream_.binary(message.kind == WebSocketMessage::Kind::data);
    const auto bytes = std::make_shared<std::string>(std::move(message.bytes));
    stream_.async_write(boost::asio::buffer(*bytes),
                        [self = shared_from_this(), bytes, handler = std::move(handler)](
                            const error_code& error, std::size_t) {
                            handler(error ? std::optional(lostConnection(error)) : std::nullopt);
                        });
}

void Connection::close(int code) {
    if (hasCloseFrame_) {
        return;
    }
    if (!stream_.is_open()) {
        abort();
        return;
    }
    startCloseTimer();
    stream_.async_close(static_cast<websocket::close_code>(code),
                        [self = shared_from_this()](const error_code&) { self->abort(); });
}

void Connection::startCloseTimer() {
    if (!beast::get_lowest_layer(stream_).is_open()) {
        return;
    }
    closeTimer_.expires_after(closeTimeout_);
    // A strong reference: the task may release the connection before the close handshake ends.
    closeTimer_.async_wait([self = shared_from_this()](const error_code& error) {
        if (!error) {
            self->abort();
        }
    });
}

void Connection::abort() {
    closeTimer_.cancel();
    error_code ignored;  // Closing fails only for a socket that is closed already.
    beast::get_lowest_layer(stream_).close(ignored);
}

bool Connection::isOperationAborted(const Error& error) {
    return error.code == boost::asio::error::operation_aborted;
}

}  // namespace tarvik::linuxdesktop
