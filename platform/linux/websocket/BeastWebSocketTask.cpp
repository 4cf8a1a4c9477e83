// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/BeastWebSocketTask.h"

#include <malloc.h>

#include <cerrno>
#include <utility>

#include "base/Weakly.h"
#include "platform/linux/websocket/LogText.h"

namespace tarvik::linuxdesktop {

namespace {

using platform::WebSocketMessage;

// Reading stops while the inbox has this many messages or bytes.
constexpr std::size_t maxInboxMessages = 64;
constexpr std::size_t maxInboxBytes = std::size_t{32} << 20;

// The log tells of messages that wait longer than this.
constexpr std::chrono::seconds maxUnreportedWait{5};

// Each unsent message reports the lost connection once. The plain reason is the error of the
// receive.
Error sendError(const Error& end) {
    return {end.code, "A message could not be sent: " + end.localizedDescription};
}

// What the log says about a message that is not delivered; empty for one that is.
std::optional<std::string> describeDropped(const Connection::Received& received) {
    if (const auto* size = std::get_if<std::uint64_t>(&received)) {
        return "a message of " + std::to_string(*size) + " bytes that is longer than " +
               std::to_string(platform::maxReceivedMessageSize);
    }
    const auto& message = std::get<WebSocketMessage>(received);
    if (message.kind == WebSocketMessage::Kind::string && !isUtf8(message.bytes)) {
        return "a text message of " + std::to_string(message.bytes.size()) +
               " bytes that is not UTF-8";
    }
    return std::nullopt;
}

}  // namespace

BeastWebSocketTask::BeastWebSocketTask(std::shared_ptr<BeastWebSocketSession> session,
                                       platform::UrlRequest request)
    : session_(std::move(session)), request_(std::move(request)) {}

void BeastWebSocketTask::resume() {
    session_->thread()->post([self = shared_from_this()] { self->resumeOnThread(); });
}

void BeastWebSocketTask::send(WebSocketMessage message, SendHandler handler) {
    session_->thread()->post(
        [self = shared_from_this(),
         outgoing = Outgoing{std::move(message), std::move(handler)}]() mutable {
            self->sendOnThread(std::move(outgoing));
        });
}

void BeastWebSocketTask::receive(ReceiveHandler handler) {
    session_->thread()->post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->receiveOnThread(std::move(handler));
    });
}

void BeastWebSocketTask::cancel(int closeCode) {
    session_->thread()->post(
        [self = shared_from_this(), closeCode] { self->cancelOnThread(closeCode); });
}

void BeastWebSocketTask::resumeOnThread() {
    if (state_ != State::created) {
        return;
    }
    state_ = State::connecting;
    connector_ = std::make_shared<Connector>(session_->thread(), session_->context(), request_);
    // A strong reference: the connector destroys its handler at its end, which breaks the cycle.
    connector_->start([self = shared_from_this()](Result<Connector::Connected> result) {
        self->onConnected(std::move(result));
    });
}

void BeastWebSocketTask::sendOnThread(Outgoing outgoing) {
    if (state_ == State::ended) {
        outgoing.handler(sendError(endError_));
        return;
    }
    outgoing_.push_back(std::move(outgoing));
    reportBacklog();
    sendNext();
}

void BeastWebSocketTask::receiveOnThread(ReceiveHandler handler) {
    if (!inbox_.empty()) {
        WebSocketMessage message = std::move(inbox_.front());
        inbox_.pop_front();
        inboxBytes_ -= message.bytes.size();
        isInboxDraining_ = true;
        readNext();
        handler(std::move(message));
        return;
    }
    if (state_ == State::ended) {
        handler(endError_);
        return;
    }
    receiveHandlers_.push_back(std::move(handler));
}

void BeastWebSocketTask::cancelOnThread(int closeCode) {
    inbox_.clear();
    inboxBytes_ = 0;
    if (state_ == State::ended) {
        return;
    }
    if (connector_) {
        connector_->cancel();
        connector_.reset();
    }
    if (connection_) {
        connection_->close(closeCode);
    }
    end({ECANCELED, "The connection was cancelled"});
}

void BeastWebSocketTask::onConnected(Result<Connector::Connected> result) {
    connector_.reset();
    if (!result) {
        end(result.error());
        return;
    }
    state_ = State::open;
    auto [connection, protocol] = std::move(result).value();
    connection_ = std::move(connection);
    session_->connectionOpened(connection_);
    connection_->open(weakly(*this, [](BeastWebSocketTask& self, int code, std::string reason) {
        self.onCloseFrame({code, std::move(reason)});
    }));
    if (const auto delegate = session_->delegate()) {
        delegate->didOpen(*this, protocol);
    }
    sendNext();
    readNext();
}

void BeastWebSocketTask::sendNext() {
    if (state_ != State::open || closeFrame_ || isSending_ || outgoing_.empty()) {
        return;
    }
    isSending_ = true;
    connection_->write(std::move(outgoing_.front().message),
                       [self = shared_from_this()](const std::optional<Error>& error) {
                           self->isSending_ = false;
                           self->onSent(error);
                       });
}

void BeastWebSocketTask::onSent(const std::optional<Error>& error) {
    if (state_ != State::open) {
        return;
    }
    if (error) {
        // The read fails too, and its error has the reason.
        if (!(isReading_ && Connection::isOperationAborted(*error))) {
            connection_->abort();
            end(*error);
        }
        return;
    }
    const SendHandler handler = std::move(outgoing_.front().handler);
    outgoing_.pop_front();
    if (outgoing_.empty()) {
        reportEndOfBacklog("all waiting sound has left");
    }
    sendNext();
    handler(std::nullopt);
}

// Sound comes all the time, so the next message is soon enough for a look at the oldest one.
void BeastWebSocketTask::reportBacklog() {
    const auto& oldest = outgoing_.front();
    if (!isBacklogReported_ &&
        std::chrono::steady_clock::now() - oldest.queueTime > maxUnreportedWait) {
        isBacklogReported_ = true;
        session_->context()->log.write(
            "TarvikDictate: the network is too slow, more than 5 s of sound wait to be sent");
    }
}

void BeastWebSocketTask::reportEndOfBacklog(const std::string& line) {
    if (std::exchange(isBacklogReported_, false)) {
        session_->context()->log.write("TarvikDictate: " + line);
        // The allocator would keep the memory of ten minutes of sound.
        malloc_trim(0);
    }
}

void BeastWebSocketTask::readNext() {
    if (state_ != State::open || closeFrame_ || isReading_ || inbox_.size() >= maxInboxMessages ||
        inboxBytes_ >= maxInboxBytes) {
        return;
    }
    isReading_ = true;
    connection_->read([self = shared_from_this()](Result<Connection::Received> result) {
        self->isReading_ = false;
        self->onRead(std::move(result));
    });
}

void BeastWebSocketTask::onRead(Result<Connection::Received> result) {
    if (state_ != State::open) {
        return;
    }
    if (!result) {
        // After a close frame, deliverClose() reports the end.
        if (!closeFrame_) {
            end(result.error());
        }
        return;
    }
    Connection::Received received = std::move(result).value();
    if (const auto dropped = describeDropped(received)) {
        session_->context()->log.write("TarvikDictate: dropped " + *dropped);
    } else {
        deliver(std::get<WebSocketMessage>(std::move(received)));
    }
    readNext();
}

void BeastWebSocketTask::deliver(WebSocketMessage message) {
    if (receiveHandlers_.empty()) {
        inboxBytes_ += message.bytes.size();
        inbox_.push_back(std::move(message));
        return;
    }
    const ReceiveHandler handler = std::move(receiveHandlers_.front());
    receiveHandlers_.pop_front();
    handler(std::move(message));
}

void BeastWebSocketTask::onCloseFrame(CloseFrame frame) {
    if (state_ != State::open) {
        return;
    }
    closeFrame_ = std::move(frame);
    isInboxDraining_ = false;
    postDeliverClose();
}

// Posted, so that the operations of a handler that has just run come first.
void BeastWebSocketTask::postDeliverClose() {
    session_->thread()->post([self = shared_from_this()] { self->deliverClose(); });
}

void BeastWebSocketTask::deliverClose() {
    if (state_ != State::open) {
        return;
    }
    if (!inbox_.empty() && std::exchange(isInboxDraining_, false)) {
        postDeliverClose();
        return;
    }
    const auto [code, reason] = *closeFrame_;
    if (const auto delegate = session_->delegate()) {
        delegate->didClose(*this, code, reason);
    }
    const std::string why = logText(reason);
    end({code, "The service closed the connection (" + std::to_string(code) +
                   (why.empty() ? "" : ": " + why) + ")"});
}

void BeastWebSocketTask::end(const Error& error) {
    state_ = State::ended;
    endError_ = error;
    // Pending operations hold the connection until their end.
    connection_.reset();
    auto outgoing = std::exchange(outgoing_, {});
    const auto receivers = std::exchange(receiveHandlers_, {});
    for (const Outgoing& waiting : outgoing) {
        waiting.handler(sendError(error));
    }
    outgoing.clear();
    reportEndOfBacklog("the waiting sound is lost");
    for (const ReceiveHandler& receiver : receivers) {
        receiver(error);
    }
    session_->connectionEnded();
}

void BeastWebSocketTask::drop() {
    state_ = State::ended;
    outgoing_.clear();
    reportEndOfBacklog("the waiting sound is lost");
    receiveHandlers_.clear();
    inbox_.clear();
    if (connector_) {
        connector_->cancel();
        connector_.reset();
    }
    connection_.reset();
}

}  // namespace tarvik::linuxdesktop
