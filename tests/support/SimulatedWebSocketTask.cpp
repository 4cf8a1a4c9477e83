// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedWebSocketTask.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "base/Weakly.h"

namespace tarvik::simulated {

namespace {

using platform::WebSocketMessage;

bool canStandInHeader(const std::string& value) {
    return std::none_of(value.begin(), value.end(), [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return (byte < 0x20 && byte != '\t') || byte == 0x7F;
    });
}

}  // namespace

SimulatedWebSocketTask::SimulatedWebSocketTask(SimulatedTime& time, Context context,
                                               platform::UrlRequest request)
    : time_(time), context_(std::move(context)), request_(std::move(request)) {}

void SimulatedWebSocketTask::resume() {
    {
        const std::lock_guard lock(mutex_);
        ++resumes_;
        operations_.emplace_back("resume");
        if (state_ != State::created) {
            return;
        }
        state_ = State::connecting;
    }
    for (const auto& [name, value] : request_.headerFields) {
        if (!canStandInHeader(value)) {
            queueEnd({EINVAL, "The header field " + name + " has a control character"});
            return;
        }
    }
    time_.asyncAfter(Seconds(request_.timeoutInterval), weakly(*this, [](auto& self) {
                         if (self.state() == State::connecting) {
                             self.queueEnd({ETIMEDOUT, "The request timed out"});
                         }
                     }));
}

void SimulatedWebSocketTask::send(WebSocketMessage message, SendHandler handler) {
    context_.onCall("send " + (message.kind == WebSocketMessage::Kind::string
                                   ? message.bytes
                                   : std::to_string(message.bytes.size()) + " bytes"));
    const std::lock_guard lock(mutex_);
    operations_.emplace_back("send");
    switch (state_) {
        case State::created:
        case State::connecting:
            waitingSends_.push_back({std::move(message), std::move(handler)});
            break;
        case State::open:
            queueTransmission(std::move(message), std::move(handler));
            break;
        case State::ended:
            context_.queue->submit(
                [handler = std::move(handler), error = endError_] { handler(error); });
            break;
    }
}

// With the mutex held.
void SimulatedWebSocketTask::queueTransmission(WebSocketMessage message, SendHandler handler) {
    std::optional<Error> failure = std::exchange(nextSendFailure_, std::nullopt);
    if (!failure) {
        sent_.push_back(std::move(message));
    }
    context_.queue->submit(
        [handler = std::move(handler), failure = std::move(failure)] { handler(failure); });
}

void SimulatedWebSocketTask::receive(ReceiveHandler handler) {
    const std::lock_guard lock(mutex_);
    ++receives_;
    operations_.emplace_back("receive");
    if (!inbox_.empty()) {
        // First in the queue, before the events that followed the message, such as the close.
        context_.queue->submitFirst([handler = std::move(handler),
                                     message = std::move(inbox_.front())] { handler(message); });
        inbox_.pop_front();
        return;
    }
    if (state_ == State::ended) {
        context_.queue->submit(
            [handler = std::move(handler), error = endError_] { handler(error); });
        return;
    }
    waitingReceives_.push_back(std::move(handler));
    maxWaitingReceives_ = std::max(maxWaitingReceives_, static_cast<int>(waitingReceives_.size()));
}

void SimulatedWebSocketTask::cancel(int closeCode) {
    context_.onCall("cancel " + std::to_string(closeCode));
    {
        const std::lock_guard lock(mutex_);
        cancels_.push_back(closeCode);
        operations_.emplace_back("cancel");
        inbox_.clear();
    }
    queueEnd({ECANCELED, "The operation was cancelled"});
}

void SimulatedWebSocketTask::open(const std::string& protocol) {
    context_.queue->submit([self = shared_from_this(), protocol] {
        {
            const std::lock_guard lock(self->mutex_);
            if (self->state_ != State::connecting) {
                return;
            }
            self->state_ = State::open;
            for (Waiting& waiting : std::exchange(self->waitingSends_, {})) {
                self->queueTransmission(std::move(waiting.message), std::move(waiting.handler));
            }
        }
        if (const auto delegate = self->context_.delegate()) {
            delegate->didOpen(*self, protocol);
        }
    });
}

void SimulatedWebSocketTask::close(int code, const std::string& reason) {
    notifyClose(code, reason);
    context_.queue->submit([self = shared_from_this()] {
        self->endNow({ENOTCONN, "The socket is not connected"});
    });
}

void SimulatedWebSocketTask::notifyClose(int code, const std::string& reason) {
    context_.queue->submit([self = shared_from_this(), code, reason] {
        if (self->state() == State::ended) {
            return;
        }
        if (const auto delegate = self->context_.delegate()) {
            delegate->didClose(*self, code, reason);
        }
    });
}

void SimulatedWebSocketTask::deliverText(std::string text) {
    deliver({WebSocketMessage::Kind::string, std::move(text)});
}

void SimulatedWebSocketTask::deliverData(std::string bytes) {
    deliver({WebSocketMessage::Kind::data, std::move(bytes)});
}

void SimulatedWebSocketTask::deliverOther() {
    deliver({WebSocketMessage::Kind::other, {}});
}

void SimulatedWebSocketTask::deliver(WebSocketMessage message) {
    context_.queue->submit([self = shared_from_this(), message = std::move(message)]() mutable {
        ReceiveHandler handler;
        {
            const std::lock_guard lock(self->mutex_);
            if (self->state_ == State::ended) {
                return;
            }
            if (self->waitingReceives_.empty()) {
                self->inbox_.push_back(std::move(message));
                return;
            }
            handler = std::move(self->waitingReceives_.front());
            self->waitingReceives_.erase(self->waitingReceives_.begin());
        }
        handler(std::move(message));
    });
}

void SimulatedWebSocketTask::fail(Error error) {
    queueEnd(std::move(error));
}

// Queues the end of the connection on the delegate queue.
void SimulatedWebSocketTask::queueEnd(Error error) {
    context_.queue->submit(
        [self = shared_from_this(), error = std::move(error)] { self->endNow(error); });
}

// On the delegate queue.
void SimulatedWebSocketTask::endNow(const Error& error) {
    std::vector<ReceiveHandler> receives;
    std::vector<Waiting> waiting;
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::ended) {
            return;
        }
        state_ = State::ended;
        endError_ = error;
        receives.swap(waitingReceives_);
        waiting.swap(waitingSends_);
    }
    for (const Waiting& send : waiting) {
        send.handler(error);
    }
    for (const ReceiveHandler& handler : receives) {
        handler(error);
    }
    context_.onEnd();
}

void SimulatedWebSocketTask::failNextSend(Error error) {
    const std::lock_guard lock(mutex_);
    nextSendFailure_ = std::move(error);
}

void SimulatedWebSocketTask::abandon() {
    std::vector<ReceiveHandler> receives;
    std::vector<Waiting> waiting;
    const std::lock_guard lock(mutex_);
    state_ = State::ended;
    receives.swap(waitingReceives_);
    waiting.swap(waitingSends_);
}

SimulatedWebSocketTask::State SimulatedWebSocketTask::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

std::optional<std::string> SimulatedWebSocketTask::header(const std::string& name) const {
    for (const auto& [fieldName, value] : request_.headerFields) {
        if (fieldName == name) {
            return value;
        }
    }
    return std::nullopt;
}

std::vector<WebSocketMessage> SimulatedWebSocketTask::sent() const {
    const std::lock_guard lock(mutex_);
    return sent_;
}

std::size_t SimulatedWebSocketTask::sentMessages() const {
    const std::lock_guard lock(mutex_);
    return sent_.size();
}

std::vector<std::string> SimulatedWebSocketTask::sentTexts() const {
    return sentOfKind(WebSocketMessage::Kind::string);
}

std::vector<std::string> SimulatedWebSocketTask::sentData() const {
    return sentOfKind(WebSocketMessage::Kind::data);
}

std::vector<std::string> SimulatedWebSocketTask::sentOfKind(WebSocketMessage::Kind kind) const {
    std::vector<std::string> payloads;
    for (const WebSocketMessage& message : sent()) {
        if (message.kind == kind) {
            payloads.push_back(message.bytes);
        }
    }
    return payloads;
}

std::vector<int> SimulatedWebSocketTask::cancels() const {
    const std::lock_guard lock(mutex_);
    return cancels_;
}

bool SimulatedWebSocketTask::hasWaitingReceive() const {
    const std::lock_guard lock(mutex_);
    return !waitingReceives_.empty();
}

int SimulatedWebSocketTask::receives() const {
    const std::lock_guard lock(mutex_);
    return receives_;
}

int SimulatedWebSocketTask::maxWaitingReceives() const {
    const std::lock_guard lock(mutex_);
    return maxWaitingReceives_;
}

int SimulatedWebSocketTask::resumes() const {
    const std::lock_guard lock(mutex_);
    return resumes_;
}

std::vector<std::string> SimulatedWebSocketTask::operations() const {
    const std::lock_guard lock(mutex_);
    return operations_;
}

}  // namespace tarvik::simulated
