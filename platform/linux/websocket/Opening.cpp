#include "platform/linux/websocket/Opening.h"

#include <boost/asio/error.hpp>
#include <boost/asio/ssl/stream_base.hpp>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <utility>

#include "base/Weakly.h"
#include "platform/linux/websocket/Authority.h"
#include "platform/linux/websocket/NameLookup.h"
#include "platform/linux/websocket/NetworkError.h"
#include "platform/linux/websocket/ProxyTunnel.h"
#include "platform/linux/websocket/RequestHeaders.h"
#include "platform/linux/websocket/ServiceText.h"

namespace tarvik::linuxdesktop {

namespace {

namespace websocket = boost::beast::websocket;
using boost::asio::ip::tcp;
using boost::system::error_code;

std::string inSeconds(double seconds) {
    std::ostringstream text;
    text << seconds << " s";
    return text.str();
}

}  // namespace

Opening::Opening(std::shared_ptr<SerialThread> thread,
                 std::shared_ptr<const SessionContext> context, platform::UrlRequest request)
    : thread_(std::move(thread)),
      context_(std::move(context)),
      request_(std::move(request)),
      limit_(thread_->context()) {}

void Opening::start(Completion completion) {
    completion_ = std::move(completion);
    if (auto error = prepare()) {
        fail(std::move(*error));
        return;
    }
    limitTime();
    if (proxy_) {
        connectTo(proxy_->host, proxy_->port);
    } else {
        connectTo(url_.host, url_.port);
    }
    // The first connection reads the trust store while the network is busy with it.
    context_->trustStore.context();
}

std::optional<Error> Opening::prepare() {
    const auto url = WebSocketUrl::parse(request_.url);
    if (!url) {
        return Error{EINVAL, "The address is not a wss URL: " + serviceText(request_.url)};
    }
    url_ = *url;
    if (auto objection = objectionToHeaders(request_.headerFields)) {
        return objection;
    }
    auto proxy = context_->proxies.proxyFor(url_.host, url_.port);
    if (!proxy) {
        return proxy.error();
    }
    proxy_ = std::move(proxy).value();
    return std::nullopt;
}

void Opening::limitTime() {
    limit_.expires_after(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(request_.timeoutInterval)));
    limit_.async_wait(weakly(*this, [](Opening& self, const error_code& failure) {
        if (!failure) {
            self.fail({ETIMEDOUT, "The connection to " + self.url_.host + " did not open within " +
                                      inSeconds(self.request_.timeoutInterval)});
        }
    }));
}

void Opening::connectTo(const std::string& host, std::uint16_t port) {
    const std::string where = hostWithPort(host, port);
    lookUpHost(*thread_, host, port, weakly(*this, [where](Opening& self, auto endpoints) {
        if (!self.completion_) {
            return;
        }
        if (!endpoints) {
            self.fail(endpoints.error());
            return;
        }
        self.race(where, std::move(endpoints).value());
    }));
}

void Opening::race(const std::string& where, std::vector<tcp::endpoint> endpoints) {
    race_ = std::make_shared<AddressRace>(thread_->context(), std::move(endpoints));
    race_->start([self = shared_from_this(), where](const error_code& failure, tcp::socket socket) {
        if (failure) {
            self->fail(networkError("No connection to " + where, failure));
            return;
        }
        self->onConnected(std::move(socket));
    });
}

void Opening::onConnected(tcp::socket socket) {
    error_code ignored;  // Without the option everything works, only later.
    socket.set_option(tcp::no_delay(true), ignored);
    connection_ = std::make_shared<Connection>(std::move(socket), context_->trustStore.context(),
                                               context_->closeTimeout);
    if (proxy_) {
        tunnel();
    } else {
        handshakeTls();
    }
}

void Opening::tunnel() {
    openTunnel(boost::beast::get_lowest_layer(connection_->stream()), *proxy_,
               hostWithPort(url_.host, url_.port),
               [self = shared_from_this(), connection = connection_](std::optional<Error> error) {
                   if (!self->completion_) {
                       return;
                   }
                   if (error) {
                       self->fail(std::move(*error));
                       return;
                   }
                   self->handshakeTls();
               });
}

void Opening::handshakeTls() {
    auto& tls = connection_->stream().next_layer().next_layer();
    if (!TrustStore::expect(tls.native_handle(), url_.host)) {
        fail({EINVAL, "The host name " + url_.host + " cannot be verified"});
        return;
    }
    tls.async_handshake(
        boost::asio::ssl::stream_base::client,
        [self = shared_from_this(), connection = connection_](const error_code& failure) {
            if (self->completion_) {
                self->onTlsHandshake(failure);
            }
        });
}

void Opening::onTlsHandshake(const error_code& failure) {
    if (!failure) {
        handshakeWebSocket();
        return;
    }
    auto& tls = connection_->stream().next_layer().next_layer();
    if (const auto objection = TrustStore::objection(tls.native_handle())) {
        fail({0, "The certificate of " + url_.host + " does not verify: " + *objection});
        return;
    }
    fail(networkError("No secure connection to " + url_.host, failure));
}

void Opening::handshakeWebSocket() {
    auto& stream = connection_->stream();
    stream.set_option(websocket::stream_base::decorator(
        [fields = request_.headerFields](websocket::request_type& request) {
            addHeaders(request, fields);
        }));
    // The response must stay for as long as the connection's operation needs it.
    stream.async_handshake(
        response_, url_.hostHeader(), url_.target,
        [self = shared_from_this(), connection = connection_](const error_code& failure) {
            if (self->completion_) {
                self->onWebSocketHandshake(failure);
            }
        });
}

void Opening::onWebSocketHandshake(const error_code& failure) {
    if (!failure) {
        const auto protocol = response_[boost::beast::http::field::sec_websocket_protocol];
        finish(Opened{std::exchange(connection_, nullptr),
                      std::string(protocol.data(), protocol.size())});
        return;
    }
    if (failure != websocket::error::upgrade_declined) {
        fail(networkError("The service broke the opening of the web socket off", failure));
        return;
    }
    const std::string_view reason(response_.reason().data(), response_.reason().size());
    std::string text =
        "The service refused the web socket: " + httpStatusText(response_.result_int(), reason);
    if (const std::string body = serviceText(response_.body()); !body.empty()) {
        text += ": " + body;
    }
    fail({static_cast<int>(response_.result_int()), std::move(text)});
}

void Opening::fail(Error error) {
    finish(std::move(error));
}

void Opening::finish(Result<Opened> result) {
    const Completion completion = std::exchange(completion_, {});
    cancel();
    if (completion) {
        completion(std::move(result));
    }
}

void Opening::cancel() {
    completion_ = {};
    limit_.cancel();
    if (race_) {
        race_->cancel();
    }
    if (connection_) {
        // What is under way on it holds it until it has ended.
        std::exchange(connection_, nullptr)->abort();
    }
}

}  // namespace tarvik::linuxdesktop
