#pragma once

#include <boost/asio/compose.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/core/buffers_prefix.hpp>
#include <boost/beast/core/buffers_range.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/teardown.hpp>
#include <functional>
#include <utility>

#include "platform/linux/websocket/FrameKinds.h"

namespace tarvik::linuxdesktop {

/// The TLS stream below a web socket: what is read passes FrameKinds, and an end without TLS's own
/// farewell is an end of file, because the web socket has a farewell of its own.
class FrameStream {
  public:
    using next_layer_type = boost::beast::ssl_stream<boost::asio::ip::tcp::socket>;
    using executor_type = next_layer_type::executor_type;

    FrameStream(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context& context)
        : next_(std::move(socket), context) {}

    executor_type get_executor() noexcept { return next_.get_executor(); }
    next_layer_type& next_layer() noexcept { return next_; }
    const next_layer_type& next_layer() const noexcept { return next_; }
    FrameKinds& kinds() { return kinds_; }

    /// What is done when the web socket begins to end the connection below it.
    void setOnTeardown(std::function<void()> onTeardown) { onTeardown_ = std::move(onTeardown); }

    template <typename Buffers, typename Token>
    auto async_read_some(const Buffers& buffers, Token&& token) {
        return boost::asio::async_compose<Token, void(boost::system::error_code, std::size_t)>(
            ReadOperation<Buffers>{*this, buffers}, token, next_);
    }

    template <typename Buffers, typename Token>
    auto async_write_some(const Buffers& buffers, Token&& token) {
        return next_.async_write_some(buffers, std::forward<Token>(token));
    }

    template <typename Handler>
    void tearDown(boost::beast::role_type role, Handler&& handler) {
        onTeardown_();
        boost::asio::async_compose<Handler, void(boost::system::error_code)>(
            TeardownOperation{*this, role}, handler, next_);
    }

  private:
    template <typename Buffers>
    struct ReadOperation {
        FrameStream& stream;
        Buffers buffers;

        template <typename Self>
        void operator()(Self& self) {
            // The operation moves away with the buffers.
            const Buffers target = buffers;
            stream.next_.async_read_some(target, std::move(self));
        }

        template <typename Self>
        void operator()(Self& self, boost::system::error_code failure, std::size_t size) {
            if (failure == boost::asio::ssl::error::stream_truncated) {
                failure = boost::asio::error::eof;
            }
            const auto arrived = boost::beast::buffers_prefix(size, buffers);
            for (const auto buffer : boost::beast::buffers_range_ref(arrived)) {
                stream.kinds_.process({static_cast<unsigned char*>(buffer.data()), buffer.size()});
            }
            self.complete(failure, size);
        }
    };

    struct TeardownOperation {
        FrameStream& stream;
        boost::beast::role_type role;

        template <typename Self>
        void operator()(Self& self) {
            using boost::beast::async_teardown;
            async_teardown(role, stream.next_, std::move(self));
        }

        // However it went, the reason for the teardown is what counts.
        template <typename Self>
        void operator()(Self& self, const boost::system::error_code& /*failure*/) {
            self.complete({});
        }
    };

    next_layer_type next_;
    std::function<void()> onTeardown_;
    FrameKinds kinds_;
};

/// Found by Beast through the stream's namespace.
template <typename Handler>
void async_teardown(boost::beast::role_type role, FrameStream& stream, Handler&& handler) {
    stream.tearDown(role, std::forward<Handler>(handler));
}

}  // namespace tarvik::linuxdesktop
