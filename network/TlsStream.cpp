#include "network/TlsStream.h"

#include <boost/asio/error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/teardown.hpp>

namespace tarvik::network {

using boost::system::error_code;

void TlsStream::read(Buffers buffers, Transferred done) {
    const Buffers target = buffers;  // The handler moves away with its own.
    next_.async_read_some(target, [this, buffers = std::move(buffers), done = std::move(done)](
                                      error_code error, std::size_t size) {
        if (error == boost::asio::ssl::error::stream_truncated) {
            error = boost::asio::error::eof;
        }
        onArrival(buffers, size);
        done(error, size);
    });
}

void TlsStream::write(const std::vector<boost::asio::const_buffer>& buffers, Transferred done) {
    next_.async_write_some(buffers, std::move(done));
}

void TlsStream::end(boost::beast::role_type role, TornDown done) {
    onTeardown();
    using boost::beast::async_teardown;
    // However it goes, the reason for the teardown is what counts.
    async_teardown(role, next_,
                   [done = std::move(done)](const error_code& /*error*/) { done({}); });
}

}  // namespace tarvik::network
