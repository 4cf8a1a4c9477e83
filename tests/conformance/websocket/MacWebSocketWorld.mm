// SPDX-License-Identifier: MIT

#include <optional>
#include <stdexcept>

#include "platform/macos/system/MonotonicClock.h"
#import "platform/macos/websocket/UrlWebSocketService.h"
#include "tests/conformance/websocket/LoopbackListener.h"
#include "tests/conformance/websocket/PlainPeer.h"
#include "tests/conformance/websocket/WebSocketWorld.h"
#import "tests/macos/MainRunLoop.h"

namespace tarvik::tests {

namespace {

// Longer than a session holds its delegate.
constexpr Seconds timeout(30);

/// NSURLSession and a server in this process. Only a user can make the system trust a certificate
/// of this server, so the connection has no TLS. The system allows that for an address in numbers.
class MacWebSocketWorld final : public WebSocketWorld {
  public:
    platform::WebSocketService& service() override { return service_; }

    platform::UrlRequest request() override {
        platform::UrlRequest request;
        request.url = "ws://127.0.0.1:" + std::to_string(listener_.port()) + "/v1/listen?a=b%20c";
        request.headerFields = {{"Sec-WebSocket-Protocol", "token, key"}};
        return request;
    }

    bool runUntil(const std::function<bool()>& condition) override {
        return runMainLoopUntil(condition, timeout);
    }
    void settle() override {
        runMainLoopUntil([] { return false; }, Seconds(0.2));
    }
    Seconds now() override { return clock_.now().time_since_epoch(); }
    Seconds delegateHoldTime() override { return Seconds(10); }

    void accept(const std::string& protocol) override {
        peer_.reset();
        peer_.emplace(listener_.acceptSocket());
        peer_->write(PlainPeer::upgradeResponse(peer_->readHead(), protocol));
    }
    void sendText(const std::string& text) override {
        peer_->write(PlainPeer::frame(PlainPeer::text, text));
    }
    void sendData(const std::string& bytes) override {
        peer_->write(PlainPeer::frame(PlainPeer::data, bytes));
    }
    void sendClose(int code, const std::string& reason) override {
        peer_->write(PlainPeer::closeFrame(code, reason));
    }
    void lose() override { peer_->reset(); }

    platform::WebSocketMessage nextMessage() override {
        const auto frame = peer_->readFrame();
        if (!frame || !frame->isMasked) {
            throw std::runtime_error("The client sent no message");
        }
        return {frame->opcode == PlainPeer::text ? platform::WebSocketMessage::Kind::string
                                                 : platform::WebSocketMessage::Kind::data,
                frame->payload};
    }

  private:
    macdesktop::MonotonicClock clock_;
    LoopbackListener listener_{"127.0.0.1"};
    std::optional<PlainPeer> peer_;
    macdesktop::UrlWebSocketService service_;
};

}  // namespace

WebSocketWorldMaker realWebSocketWorld() {
    return {"Real", [] { return std::make_unique<MacWebSocketWorld>(); }};
}

}  // namespace tarvik::tests
