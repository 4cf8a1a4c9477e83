// SPDX-License-Identifier: MIT

#include <cerrno>
#include <thread>

#include "tests/conformance/websocket/WebSocketWorld.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedTime.h"
#include "tests/support/SimulatedWebSockets.h"

namespace tarvik::tests {

namespace {

class SimulatedWebSocketWorld final : public WebSocketWorld {
  public:
    SimulatedWebSocketWorld() { sockets_.setAutomatic(false); }

    platform::WebSocketService& service() override { return sockets_; }

    platform::UrlRequest request() override {
        platform::UrlRequest request;
        request.url = "wss://speech.example/v1/listen";
        request.headerFields = {{"Sec-WebSocket-Protocol", "token, key"}};
        return request;
    }

    bool runUntil(const std::function<bool()>& condition) override {
        constexpr int maxSteps = 1000;
        for (int step = 0; step < maxSteps; ++step) {
            settle();
            if (condition()) {
                return true;
            }
            time_.advance(Seconds(0.1));
        }
        return false;
    }

    void settle() override {
        std::thread([this] { sockets_.runDelegateQueues(); }).join();
    }

    Seconds now() override { return time_.now().time_since_epoch(); }
    Seconds delegateHoldTime() override { return Seconds(10); }

    void accept(const std::string& protocol) override { sockets_.lastTask().open(protocol); }
    void sendText(const std::string& text) override { sockets_.lastTask().deliverText(text); }
    void sendData(const std::string& bytes) override { sockets_.lastTask().deliverData(bytes); }
    void sendClose(int code, const std::string& reason) override {
        sockets_.lastTask().close(code, reason);
    }
    void lose() override { sockets_.lastTask().fail({ECONNRESET, "Connection reset by peer"}); }

    platform::WebSocketMessage nextMessage() override {
        settle();
        return sockets_.lastTask().sent().at(taken_++);
    }

  private:
    simulated::SimulatedTime time_;
    simulated::Journal journal_;
    simulated::SimulatedWebSockets sockets_{time_, journal_};
    std::size_t taken_ = 0;
};

}  // namespace

std::unique_ptr<WebSocketWorld> makeSimulatedWebSocketWorld() {
    return std::make_unique<SimulatedWebSocketWorld>();
}

}  // namespace tarvik::tests
