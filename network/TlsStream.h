// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/role.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace tarvik::network {

/// A TLS stream as the layer below a web socket or HTTP. An end without close_notify reads as an
/// ordinary end of file, because the protocols above mark their own end.
///
/// All handlers are wrapped in one type, so that TLS and the socket are compiled once. One
/// compilation for each operation of Beast would be a quarter of the whole build.
///
/// Bytes leave at once, without Nagle's algorithm. A response after a handshake would otherwise
/// wait for the peer's delayed acknowledgement, 40 ms and a round trip.
///
/// On the socket's executor only. Handlers are called there too, even when they are associated with
/// another executor. Errors are those of Asio and OpenSSL. The stream must not move while an
/// operation is pending.
class TlsStream {
  public:
    using next_layer_type = boost::beast::ssl_stream<boost::asio::ip::tcp::socket>;
    using executor_type = next_layer_type::executor_type;

    TlsStream(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context);
    virtual ~TlsStream() = default;
    TlsStream(TlsStream&&) = default;
    TlsStream& operator=(TlsStream&&) = default;

    executor_type get_executor() noexcept { return next_.get_executor(); }
    /// The layer for the TLS handshake and for the socket below.
    next_layer_type& next_layer() noexcept { return next_; }
    const next_layer_type& next_layer() const noexcept { return next_; }

    // The operations that Beast requires of a stream.

    template <typename Buffers, typename Handler>
    void async_read_some(const Buffers& buffers, Handler&& handler) {
        read({boost::asio::buffer_sequence_begin(buffers),
              boost::asio::buffer_sequence_end(buffers)},
             shared(std::forward<Handler>(handler)));
    }

    template <typename Buffers, typename Handler>
    void async_write_some(const Buffers& buffers, Handler&& handler) {
        write({boost::asio::buffer_sequence_begin(buffers),
               boost::asio::buffer_sequence_end(buffers)},
              shared(std::forward<Handler>(handler)));
    }

    template <typename Handler>
    void teardown(boost::beast::role_type role, Handler&& handler) {
        startTeardown(role, shared(std::forward<Handler>(handler)));
    }

  protected:
    using Buffers = std::vector<boost::asio::mutable_buffer>;

    /// Called when the first `size` bytes of `buffers` have arrived, which the override may change.
    virtual void onRead(const Buffers& /*buffers*/, std::size_t /*size*/) {}
    /// Called when the web socket starts to close the connection below it.
    virtual void onTeardown() {}

  private:
    using TransferHandler = std::function<void(boost::system::error_code, std::size_t)>;
    using TeardownHandler = std::function<void(boost::system::error_code)>;

    /// Wraps a move-only handler in a copyable function, which may be called once.
    template <typename Handler>
    static auto shared(Handler&& handler) {
        return [pending = std::make_shared<std::decay_t<Handler>>(std::forward<Handler>(handler))](
                   auto... result) { std::invoke(std::move(*pending), result...); };
    }

    void read(Buffers buffers, TransferHandler handler);
    void write(const std::vector<boost::asio::const_buffer>& buffers, TransferHandler handler);
    void startTeardown(boost::beast::role_type role, TeardownHandler handler);

    next_layer_type next_;
};

/// Beast finds this by argument-dependent lookup for the stream and for derived classes.
template <std::derived_from<TlsStream> Stream, typename Handler>
void async_teardown(boost::beast::role_type role, Stream& stream, Handler&& handler) {
    stream.teardown(role, std::forward<Handler>(handler));
}

}  // namespace tarvik::network
