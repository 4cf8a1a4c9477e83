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

/// A TLS stream as the layer below a web socket or HTTP. An end without TLS's own farewell is an
/// end of file: what is spoken above it says for itself when it is over.
///
/// Every handler that waits on it is wrapped in one type, so that TLS and the socket are compiled
/// once; compiled anew for each operation of Beast they would be a quarter of the whole build.
///
/// On the socket's executor only, whatever executor a handler asks for; errors are those of Asio
/// and OpenSSL. It must not move while an operation is under way.
class TlsStream {
  public:
    using next_layer_type = boost::beast::ssl_stream<boost::asio::ip::tcp::socket>;
    using executor_type = next_layer_type::executor_type;

    TlsStream(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context)
        : next_(std::move(socket), context) {}
    virtual ~TlsStream() = default;
    TlsStream(TlsStream&&) = default;
    TlsStream& operator=(TlsStream&&) = default;

    executor_type get_executor() noexcept { return next_.get_executor(); }
    /// For the handshake, and for what is below.
    next_layer_type& next_layer() noexcept { return next_; }
    const next_layer_type& next_layer() const noexcept { return next_; }

    // What Beast asks of a stream.

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
    void tearDown(boost::beast::role_type role, Handler&& handler) {
        end(role, shared(std::forward<Handler>(handler)));
    }

  protected:
    using Buffers = std::vector<boost::asio::mutable_buffer>;

    /// The first `size` bytes of `buffers` have arrived and may be changed.
    virtual void onArrival(const Buffers& /*buffers*/, std::size_t /*size*/) {}
    /// The web socket begins to end the connection below it.
    virtual void onTeardown() {}

  private:
    using Transferred = std::function<void(boost::system::error_code, std::size_t)>;
    using TornDown = std::function<void(boost::system::error_code)>;

    /// A handler that can only be moved, as a function that can be copied. It is called once.
    template <typename Handler>
    static auto shared(Handler&& handler) {
        return [waiting = std::make_shared<std::decay_t<Handler>>(std::forward<Handler>(handler))](
                   auto... result) { std::invoke(std::move(*waiting), result...); };
    }

    void read(Buffers buffers, Transferred done);
    void write(const std::vector<boost::asio::const_buffer>& buffers, Transferred done);
    void end(boost::beast::role_type role, TornDown done);

    next_layer_type next_;
};

/// Found by Beast through the namespace of the stream or of its base.
template <std::derived_from<TlsStream> Stream, typename Handler>
void async_teardown(boost::beast::role_type role, Stream& stream, Handler&& handler) {
    stream.tearDown(role, std::forward<Handler>(handler));
}

}  // namespace tarvik::network
