// SPDX-License-Identifier: MIT

#include "tests/core/app/SessionModel.h"

#include <algorithm>
#include <utility>

#include "base/Weakly.h"
#include "tests/core/app/SessionModelClient.h"

namespace tarvik {

SessionModel::SessionModel() {
    time_.addQueue([this] {
        return std::any_of(sockets_.begin(), sockets_.end(),
                           [](const auto& socket) { return socket->queue.runOne(); });
    });
}

SessionModel::~SessionModel() {
    time_.clear();
}

void SessionModel::pressHold() {
    time_.async([this] { start(); });
}

void SessionModel::releaseHold() {
    time_.async([this] { stop(); });
}

void SessionModel::tapToggle() {
    time_.async([this] { toggle(); });
}

void SessionModel::toggle() {
    if (isRecording_) {
        stop();
    } else {
        start();
    }
}

void SessionModel::start() {
    if (isRecording_) {
        return;
    }
    if (!hasKey_) {
        time_.async([this] { prompt(); });
        return;
    }
    isRecording_ = true;
    ++number_;
    text_.clear();
    startedAt_ = now();
    lastFinalAt_ = now();
    timer_ = nullptr;
    timer_ = time_.scheduledRepeatingTimer(Seconds(5), [this] { checkLimits(); });
    log("TarvikDictate: startRecording (session=" + std::to_string(number_) + ")");
    add("frontmostApplication");
    targetProcess_ = front_;
    add("copyAttributeValue AXFocusedUIElement");
    targetElement_ = focused_;
    setIcon(true);
    add("audio inputFormat 0");
    add("makeSession");
    add("webSocketTask wss://api.deepgram.com/v1/listen?model=nova-3&smart_format=true"
        "&punctuate=true&interim_results=true&mip_opt_out=true&encoding=linear16"
        "&sample_rate=48000&channels=1");
    Socket& socket = *sockets_.emplace_back(std::make_unique<Socket>());
    client_ = std::make_shared<Client>(*this, socket);
    socket.client = client_;
    socket.heldClient = client_;
    client_->connect();
}

void SessionModel::prompt() {
    add("activateIgnoringOtherApps");
    if (isPrompting_) {
        return;
    }
    add("runModal");
    isPrompting_ = true;
    time_.runUntilIdle();
    isPrompting_ = false;
}

void SessionModel::setIcon(bool isRecording) {
    add(isRecording ? "setImage mic.fill" : "setImage mic");
    add(isRecording ? "setContentTintColor red" : "setContentTintColor none");
}

// A late connection starts the microphone too, whatever happens then.
void SessionModel::connected(bool isOpen) {
    if (isOpen) {
        startCapture();
    }
}

void SessionModel::startCapture() {
    if (!std::exchange(isCapturing_, true)) {
        for (const char* call : {"inputFormat 0", "installTap 0 2048 48000", "prepare", "start"}) {
            add(std::string("audio ") + call);
        }
    }
}

void SessionModel::stopCapture() {
    if (std::exchange(isCapturing_, false)) {
        add("audio removeTap 0");
        add("audio stop");
    }
}

void SessionModel::speak() {
    if (isCapturing_ && client_) {
        client_->sendAudio();
    }
}

void SessionModel::transcript(const std::string& text, bool isFinal) {
    if (!isFinal) {
        return;
    }
    const std::string piece = (text_.empty() ? "" : " ") + text;
    text_ += piece;
    lastFinalAt_ = now();
    time_.async([this, piece] { insert(piece); });
}

void SessionModel::insert(const std::string& piece) {
    if (targetElement_) {
        add("setAttributeValue AXSelectedText " + piece);
        if (*targetElement_ != refusingElement) {
            elementTexts_[*targetElement_] += piece;
            return;
        }
    }
    type(piece);
}

void SessionModel::type(const std::string& text) {
    const std::string receiver = targetProcess_ ? std::to_string(*targetProcess_) : "tap";
    for (std::size_t presses = 0; presses < (text.size() + 19) / 20; ++presses) {
        add("key down " + receiver);
        add("key up " + receiver);
    }
    typedTexts_[!targetProcess_ ? 2 : *targetProcess_ == processes[0] ? 0 : 1] += text;
}

void SessionModel::stop() {
    if (!isRecording_) {
        return;
    }
    isRecording_ = false;
    timer_ = nullptr;
    setIcon(false);
    log("TarvikDictate: stopRecording (session=" + std::to_string(number_) + ")");
    if (startedAt_) {
        usage_ += static_cast<std::int64_t>(now() - *startedAt_);
        startedAt_.reset();
    }
    time_.asyncAfter(Seconds(0.3), [this, number = number_, client = std::move(client_)] {
        finishStop(number, client);
    });
    client_ = nullptr;
}

void SessionModel::finishStop(std::int64_t number, const std::shared_ptr<Client>& client) {
    if (number == number_) {
        stopCapture();
        log("TarvikDictate: audio.stop (session=" + std::to_string(number) + ")");
    } else {
        log("TarvikDictate: deferred-stop SKIPPED — session " + std::to_string(number) +
            " superseded by " + std::to_string(number_));
    }
    if (client) {
        client->finish([] {});
    }
}

void SessionModel::checkLimits() {
    if (!isRecording_) {
        timer_ = nullptr;
        return;
    }
    const double elapsed = now() - startedAt_.value_or(now());
    const double silence = now() - lastFinalAt_;
    if (elapsed > 600) {
        log("TarvikDictate: auto-stop (10-min hard cap reached, elapsed=" +
            std::to_string(static_cast<int>(elapsed)) + "s)");
        stop();
    } else if (silence > 30) {
        log("TarvikDictate: auto-stop (silence " + std::to_string(static_cast<int>(silence)) +
            "s > threshold 30s)");
        stop();
    }
}

void SessionModel::wake() {
    log("TarvikDictate: system woke — resetting subsystems");
    if (std::exchange(isRecording_, false)) {
        setIcon(false);
        stopCapture();
        if (const auto client = client_) {
            client->finish([this] { client_ = nullptr; });
        }
    }
    add("unregisterEventHotKey 1");
    add("unregisterEventHotKey 2");
    add("removeEventHandler");
    registerHotkeys();
}

void SessionModel::registerHotkeys() {
    add("installEventHandler");
    add("registerEventHotKey 49 2048 TaDi 1 0");
    log("TarvikDictate: hold-to-talk registered (⌥ Space)");
    add("registerEventHotKey 49 2560 TaDi 2 0");
    log("TarvikDictate: tap-to-toggle registered (⌥ ⇧ Space)");
}

bool SessionModel::canAccept(std::size_t socket) const {
    const Socket& found = *sockets_[socket];
    return !found.isAccepted && !found.isAbandonedByService &&
           found.state == Socket::State::connecting;
}

bool SessionModel::canSay(std::size_t socket) const {
    const Socket& found = *sockets_[socket];
    return found.isAccepted && !found.isAbandonedByService;
}

void SessionModel::accept(std::size_t socket) {
    Socket& accepted = *sockets_[socket];
    accepted.isAccepted = true;
    accepted.queue.submit([this, &accepted] {
        if (accepted.state == Socket::State::connecting) {
            accepted.state = Socket::State::open;
            time_.async(weakly(*accepted.client.lock(), &Client::opened));
        }
    });
}

void SessionModel::close(std::size_t socket) {
    Socket& closed = *sockets_[socket];
    closed.isAbandonedByService = true;
    closed.queue.submit([&closed] {
        if (closed.state != Socket::State::ended) {
            closed.client.lock()->closed();
        }
    });
    closed.queue.submit([this, &closed] { endSocket(closed, "The socket is not connected"); });
}

void SessionModel::lose(std::size_t socket) {
    Socket& lost = *sockets_[socket];
    lost.isAbandonedByService = true;
    lost.queue.submit([this, &lost] { endSocket(lost, "lost"); });
}

void SessionModel::say(std::size_t socket, const std::string& text, bool isFinal) {
    Socket& saying = *sockets_[socket];
    saying.queue.submit([&saying, text, isFinal] {
        if (saying.state != Socket::State::ended && std::exchange(saying.isReceiving, false)) {
            saying.client.lock()->received(text, isFinal);
        }
    });
}

// The session holds its client for another ten seconds.
void SessionModel::endSocket(Socket& socket, const std::string& reason) {
    if (socket.state == Socket::State::ended) {
        return;
    }
    socket.state = Socket::State::ended;
    socket.endReason = reason;
    if (std::exchange(socket.isReceiving, false)) {
        log("Deepgram error: " + reason);
    }
    time_.asyncAfter(Seconds(10), [&socket] { socket.heldClient = nullptr; });
}

std::vector<std::string> SessionModel::state() const {
    std::vector<std::string> state = {"usage " + std::to_string(usage_),
                                      "timers " + std::to_string(time_.runningTimers())};
    for (const std::string& text : elementTexts_) {
        state.push_back("element: " + text);
    }
    for (const std::string& text : typedTexts_) {
        state.push_back("typed: " + text);
    }
    for (const auto& socket : sockets_) {
        std::string line = "socket:";
        for (const std::string& message : socket->received) {
            line += " " + message;
        }
        state.push_back(line);
    }
    return state;
}

}  // namespace tarvik
