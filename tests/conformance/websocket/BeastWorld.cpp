// SPDX-License-Identifier: MIT

#include "tests/conformance/websocket/BeastWorld.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace tarvik::tests {

namespace {

constexpr std::chrono::milliseconds holdTime{300};
constexpr Seconds timeout{10};
constexpr std::chrono::milliseconds pollInterval{1};
// How long settle() waits for an event that must not come.
constexpr Seconds settleTime{0.1};

}  // namespace

void BeastWorld::MemoryLog::write(std::string_view line) {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
}

std::vector<std::string> BeastWorld::MemoryLog::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

BeastWorld::BeastWorld(const TestCertificate& certificate)
    : serverContext_(makeServerContext(certificate)) {
    for (const char* name : {"https_proxy", "HTTPS_PROXY", "no_proxy", "NO_PROXY"}) {
        unsetenv(name);
    }
    restartService();
}

void BeastWorld::restartService(const std::string& authority) {
    service_.reset();
    service_ = std::make_unique<linuxdesktop::BeastWebSocketService>(
        log_, linuxdesktop::WebSocketOptions{closeTimeout, holdTime, authority,
                                             [this](bool isKeyAccepted) {
                                                 const std::lock_guard lock(keyAnswersMutex_);
                                                 keyAnswers_.push_back(isKeyAccepted);
                                             }});
}

std::vector<bool> BeastWorld::keyAnswers() const {
    const std::lock_guard lock(keyAnswersMutex_);
    return keyAnswers_;
}

platform::UrlRequest BeastWorld::request() {
    platform::UrlRequest request;
    request.url = "wss://127.0.0.1:" + std::to_string(listener_.port()) + "/v1/listen?a=b%20c";
    request.headerFields = {{"Sec-WebSocket-Protocol", "token, key"}};
    return request;
}

bool BeastWorld::runUntil(const std::function<bool()>& condition) {
    const Seconds deadline = now() + timeout;
    while (!condition()) {
        if (now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(pollInterval);
    }
    return true;
}

void BeastWorld::settle() {
    const Seconds deadline = now() + settleTime;
    runUntil([&] { return now() > deadline; });
}

Seconds BeastWorld::now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

Seconds BeastWorld::delegateHoldTime() {
    return holdTime;
}

bool BeastWorld::acceptTls() {
    peer_.reset();
    peer_.emplace(listener_.accept());
    return peer_->startTls(serverContext_.get());
}

void BeastWorld::accept(const std::string& protocol) {
    if (!acceptTls()) {
        throw std::runtime_error("The client refused the certificate");
    }
    head_ = peer_->readHead();
    peer_->write(Peer::upgradeResponse(head_, protocol));
}

void BeastWorld::sendText(const std::string& text) {
    peer_->write(Peer::frame(Peer::text, text));
}

void BeastWorld::sendData(const std::string& bytes) {
    peer_->write(Peer::frame(Peer::data, bytes));
}

void BeastWorld::sendClose(int code, const std::string& reason) {
    peer_->write(Peer::closeFrame(code, reason));
}

void BeastWorld::lose() {
    peer_->reset();
}

platform::WebSocketMessage BeastWorld::nextMessage() {
    const auto frame = peer_->readFrame();
    if (!frame || !frame->isMasked) {
        throw std::runtime_error("The client sent no message");
    }
    return {frame->opcode == Peer::text ? platform::WebSocketMessage::Kind::string
                                        : platform::WebSocketMessage::Kind::data,
            frame->payload};
}

std::vector<std::string> BeastWorld::logLines() const {
    return log_.lines();
}

WebSocketWorldMaker realWebSocketWorld() {
    return {"Beast", [] { return std::make_unique<BeastWorld>(); }};
}

}  // namespace tarvik::tests
