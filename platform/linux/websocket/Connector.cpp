// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/Connector.h"

#include <algorithm>
#include <boost/asio/error.hpp>
#include <boost/asio/ssl/stream_base.hpp>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <utility>

#include "base/Weakly.h"
#include "platform/linux/websocket/Authority.h"
#include "platform/linux/websocket/LogText.h"
#include "platform/linux/websocket/NameLookup.h"
#include "platform/linux/websocket/NetworkError.h"
#include "platform/linux/websocket/ProxyTunnel.h"
#include "platform/linux/websocket/RequestHeaders.h"

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

Connector::Connector(std::shared_ptr<SerialThread> thread, std::shared_ptr<SessionContext> context,
                     platform::UrlRequest request)
    : thread_(std::move(thread)),
      context_(std::move(context)),
      request_(std::move(request)),
      timeoutTimer_(thread_->context()) {}

void Connector::start(ConnectHandler handler) {
    handler_ = std::move(handler);
    if (auto error = prepare()) {
        fail(std::move(*error));
        return;
    }
    startTimeout();
    // A lookup that fails at once may destroy this object.
    const std::shared_ptr<SessionContext> context = context_;
    if (proxy_) {
        resolve(proxy_->host, proxy_->port);
    } else {
        resolve(url_.host, url_.port);
    }
    // The first connection makes the TLS context while the lookup and TCP go on.
    context->trustStore.sslContext();
}

std::optional<Error> Connector::prepare() {
    const auto url = WebSocketUrl::parse(request_.url);
    if (!url) {
        return Error{EINVAL, "The address is not a wss URL: " + logText(request_.url)};
    }
    url_ = *url;
    if (auto error = checkHeaders(request_.headerFields)) {
        return error;
    }
    auto proxy = context_->proxies.proxyFor(url_.host, url_.port);
    if (!proxy) {
        return proxy.error();
    }
    proxy_ = std::move(proxy).value();
    return std::nullopt;
}

void Connector::startTimeout() {
    timeoutTimer_.expires_after(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(request_.timeoutInterval)));
    timeoutTimer_.async_wait(weakly(*this, [](Connector& self, const error_code& error) {
        if (!error) {
            self.fail({ETIMEDOUT, "The connection to " + self.url_.host + " did not open within " +
                                      inSeconds(self.request_.timeoutInterval)});
        }
    }));
}

void Connector::resolve(const std::string& host, std::uint16_t port) {
    const std::string destination = hostWithPort(host, port);
    happyEyeballs_ = std::make_shared<HappyEyeballs>(thread_->context());
    if (const auto endpoint = context_->knownAddresses.find(destination)) {
        auto onConnected =
            weakly(*this, [destination, endpoint = *endpoint](Connector& self, tcp::socket socket) {
                self.unconfirmed_ = endpoint;
                self.onConnected(destination, std::move(socket));
            });
        happyEyeballs_->startEarly(*endpoint,
                                   proxy_ ? HappyEyeballs::EarlyHandler() : std::move(onConnected));
    }
    lookUpHost(*thread_, host, port, weakly(*this, [destination](Connector& self, auto endpoints) {
        if (!self.handler_) {
            return;
        }
        if (!endpoints) {
            self.fail(endpoints.error());
            return;
        }
        self.onLookedUp(destination, endpoints.value());
    }));
}

void Connector::onLookedUp(const std::string& destination,
                           const std::vector<tcp::endpoint>& endpoints) {
    const auto early = std::exchange(unconfirmed_, std::nullopt);
    if (early && std::ranges::find(endpoints, *early) != endpoints.end()) {
        if (isTlsReady_) {
            handshakeWebSocket();
        }
        return;
    }
    dropConnection();
    connectToAny(destination, endpoints);
}

void Connector::connectToAny(const std::string& destination,
                             const std::vector<tcp::endpoint>& endpoints) {
    happyEyeballs_->start(endpoints, [self = shared_from_this(), destination](
                                         const error_code& error, tcp::socket socket) {
        if (error) {
            self->fail(networkError("No connection to " + destination, error));
            return;
        }
        self->onConnected(destination, std::move(socket));
    });
}

void Connector::onConnected(const std::string& destination, tcp::socket socket) {
    error_code error;
    const tcp::endpoint endpoint = socket.remote_endpoint(error);
    // A connection that has just been reset has no remote address. The handshake reports the reset.
    if (!error) {
        context_->knownAddresses.remember(destination, endpoint);
    }
    connection_ = std::make_shared<Connection>(std::move(socket), context_->trustStore.sslContext(),
                                               context_->options.closeTimeout);
    if (proxy_) {
        openProxyTunnel();
    } else {
        handshakeTls();
    }
}

void Connector::openProxyTunnel() {
    openTunnel(boost::beast::get_lowest_layer(connection_->stream()), *proxy_,
               hostWithPort(url_.host, url_.port),
               [self = shared_from_this(), connection = connection_](std::optional<Error> error) {
                   if (!self->handler_) {
                       return;
                   }
                   if (error) {
                       self->fail(std::move(*error));
                       return;
                   }
                   self->handshakeTls();
               });
}

void Connector::handshakeTls() {
    auto& tls = connection_->stream().next_layer().next_layer();
    if (!TrustStore::requireHost(tls.native_handle(), url_.host)) {
        fail({EINVAL, "The host name " + url_.host + " cannot be verified"});
        return;
    }
    context_->trustStore.resumeSession(tls.native_handle());
    tls.async_handshake(
        boost::asio::ssl::stream_base::client,
        [self = shared_from_this(), connection = connection_](const error_code& error) {
            if (self->handler_ && self->connection_ == connection) {
                self->onTlsHandshake(error);
            }
        });
}

void Connector::onTlsHandshake(const error_code& error) {
    if (unconfirmed_) {
        // The address may belong to somebody else by now, so its error is not the host's.
        isTlsReady_ = !error;
        if (error) {
            unconfirmed_.reset();
            dropConnection();
        }
        return;
    }
    if (!error) {
        handshakeWebSocket();
        return;
    }
    auto& tls = connection_->stream().next_layer().next_layer();
    if (const auto verifyError = TrustStore::verifyError(tls.native_handle())) {
        fail({0, "The certificate of " + url_.host + " does not verify: " + *verifyError});
        return;
    }
    fail(networkError("No secure connection to " + url_.host, error));
}

void Connector::handshakeWebSocket() {
    auto& stream = connection_->stream();
    stream.set_option(websocket::stream_base::decorator(
        [fields = request_.headerFields](websocket::request_type& request) {
            addHeaders(request, fields);
        }));
    // The handler holds this object, which owns the response, until the end of the operation.
    stream.async_handshake(
        response_, url_.hostHeader(), url_.target,
        [self = shared_from_this(), connection = connection_](const error_code& error) {
            if (self->handler_) {
                self->onWebSocketHandshake(error);
            }
        });
}

void Connector::onWebSocketHandshake(const error_code& error) {
    if (!error) {
        reportKeyAnswer(true);
        const auto protocol = response_[boost::beast::http::field::sec_websocket_protocol];
        finish(Connected{std::exchange(connection_, nullptr),
                         std::string(protocol.data(), protocol.size())});
        return;
    }
    if (error != websocket::error::upgrade_declined) {
        fail(networkError("The service broke the opening of the web socket off", error));
        return;
    }
    if (response_.result() == boost::beast::http::status::unauthorized) {
        reportKeyAnswer(false);
    }
    const std::string_view reason(response_.reason().data(), response_.reason().size());
    std::string text =
        "The service refused the web socket: " + httpStatusText(response_.result_int(), reason);
    if (const std::string body = logText(response_.body()); !body.empty()) {
        text += ": " + body;
    }
    fail({static_cast<int>(response_.result_int()), std::move(text)});
}

void Connector::reportKeyAnswer(bool isKeyAccepted) {
    if (const auto& onKeyAnswer = context_->options.onKeyAnswer) {
        onKeyAnswer(isKeyAccepted);
    }
}

void Connector::fail(Error error) {
    finish(std::move(error));
}

void Connector::finish(Result<Connected> result) {
    const ConnectHandler handler = std::exchange(handler_, {});
    cancel();
    if (handler) {
        handler(std::move(result));
    }
}

void Connector::cancel() {
    handler_ = {};
    timeoutTimer_.cancel();
    if (happyEyeballs_) {
        happyEyeballs_->cancel();
    }
    dropConnection();
}

// Pending operations hold the connection until their end.
void Connector::dropConnection() {
    if (const auto connection = std::exchange(connection_, nullptr)) {
        connection->abort();
    }
}

}  // namespace tarvik::linuxdesktop
