#include "platform/linux/websocket/BeastWebSocketTask.h"

#include <cerrno>
#include <utility>

#include "base/Weakly.h"
#include "platform/linux/websocket/ServiceText.h"

namespace tarvik::linuxdesktop {

namespace {

using platform::WebSocketMessage;

// What may wait to be asked for before reading pauses.
constexpr std::size_t mostWaitingMessages = 64;
constexpr std::size_t mostWaitingBytes = std::size_t{32} << 20;

// A lost connection is told once for each message that it keeps from leaving; the reason itself
// is the receive's to tell.
Error unsent(const Error& end) {
    return {end.code, "A message could not be sent: " + end.localizedDescription};
}

}  // namespace

BeastWebSocketTask::BeastWebSocketTask(std::shared_ptr<BeastWebSocketSession> session,
                                       platform::UrlRequest request)
    : session_(std::move(session)), request_(std::move(request)) {}

void BeastWebSocketTask::resume() {
    session_->thread()->post([self = shared_from_this()] { self->open(); });
}

void BeastWebSocketTask::send(WebSocketMessage message, SendHandler handler) {
    session_->thread()->post(
        [self = shared_from_this(),
         outgoing = Outgoing{std::move(message), std::move(handler)}]() mutable {
            self->queue(std::move(outgoing));
        });
}

void BeastWebSocketTask::receive(ReceiveHandler handler) {
    session_->thread()->post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->serve(std::move(handler));
    });
}

void BeastWebSocketTask::cancel(int closeCode) {
    session_->thread()->post([self = shared_from_this(), closeCode] { self->giveUp(closeCode); });
}

void BeastWebSocketTask::open() {
    if (state_ != State::created) {
        return;
    }
    state_ = State::opening;
    opening_ = std::make_shared<Opening>(session_->thread(), session_->context(), request_);
    // The opening forgets its completion when it ends, so the two let go of each other.
    opening_->start([self = shared_from_this()](Result<Opening::Opened> result) {
        self->onOpening(std::move(result));
    });
}

void BeastWebSocketTask::onOpening(Result<Opening::Opened> result) {
    opening_.reset();
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
    writeNext();
    readNext();
}

void BeastWebSocketTask::queue(Outgoing outgoing) {
    if (state_ == State::ended) {
        outgoing.handler(unsent(endError_));
        return;
    }
    outgoing_.push_back(std::move(outgoing));
    writeNext();
}

void BeastWebSocketTask::writeNext() {
    if (state_ != State::open || closeFrame_ || isWriting_ || outgoing_.empty()) {
        return;
    }
    isWriting_ = true;
    connection_->write(std::move(outgoing_.front().message),
                       [self = shared_from_this()](const std::optional<Error>& error) {
                           self->isWriting_ = false;
                           self->onWritten(error);
                       });
}

void BeastWebSocketTask::onWritten(const std::optional<Error>& error) {
    if (state_ != State::open) {
        return;
    }
    if (error) {
        // The read that has ended the connection knows why, and tells it soon.
        if (!(isReading_ && Connection::isAftermath(*error))) {
            connection_->abort();
            end(*error);
        }
        return;
    }
    const SendHandler handler = std::move(outgoing_.front().handler);
    outgoing_.pop_front();
    writeNext();
    handler(std::nullopt);
}

void BeastWebSocketTask::serve(ReceiveHandler handler) {
    if (!inbox_.empty()) {
        WebSocketMessage message = std::move(inbox_.front());
        inbox_.pop_front();
        inboxBytes_ -= message.bytes.size();
        wasAsked_ = true;
        readNext();
        handler(std::move(message));
        return;
    }
    if (state_ == State::ended) {
        handler(endError_);
        return;
    }
    receivers_.push_back(std::move(handler));
}

void BeastWebSocketTask::readNext() {
    if (state_ != State::open || closeFrame_ || isReading_ ||
        inbox_.size() >= mostWaitingMessages || inboxBytes_ >= mostWaitingBytes) {
        return;
    }
    isReading_ = true;
    connection_->read([self = shared_from_this()](Result<WebSocketMessage> result) {
        self->isReading_ = false;
        self->onRead(std::move(result));
    });
}

void BeastWebSocketTask::onRead(Result<WebSocketMessage> result) {
    if (state_ != State::open) {
        return;
    }
    if (!result) {
        // After a close frame the end is told by deliverClose().
        if (!closeFrame_) {
            end(result.error());
        }
        return;
    }
    const WebSocketMessage& message = result.value();
    if (message.kind == WebSocketMessage::Kind::string && !isUtf8(message.bytes)) {
        session_->context()->log.write("TarvikDictate: dropped a text message of " +
                                       std::to_string(message.bytes.size()) +
                                       " bytes that is not UTF-8");
    } else {
        keepOrDeliver(std::move(result).value());
    }
    readNext();
}

void BeastWebSocketTask::keepOrDeliver(WebSocketMessage message) {
    if (receivers_.empty()) {
        inboxBytes_ += message.bytes.size();
        inbox_.push_back(std::move(message));
        return;
    }
    const ReceiveHandler handler = std::move(receivers_.front());
    receivers_.pop_front();
    handler(std::move(message));
}

void BeastWebSocketTask::onCloseFrame(CloseFrame frame) {
    if (state_ != State::open) {
        return;
    }
    closeFrame_ = std::move(frame);
    wasAsked_ = false;
    postClose();
}

// Behind whatever a handler that has just run asks for.
void BeastWebSocketTask::postClose() {
    session_->thread()->post([self = shared_from_this()] { self->deliverClose(); });
}

void BeastWebSocketTask::deliverClose() {
    if (state_ != State::open) {
        return;
    }
    if (!inbox_.empty() && std::exchange(wasAsked_, false)) {
        postClose();
        return;
    }
    const auto [code, reason] = *closeFrame_;
    if (const auto delegate = session_->delegate()) {
        delegate->didClose(*this, code, reason);
    }
    const std::string why = serviceText(reason);
    end({code, "The service closed the connection (" + std::to_string(code) +
                   (why.empty() ? "" : ": " + why) + ")"});
}

void BeastWebSocketTask::giveUp(int closeCode) {
    inbox_.clear();
    inboxBytes_ = 0;
    if (state_ == State::ended) {
        return;
    }
    if (opening_) {
        opening_->cancel();
        opening_.reset();
    }
    if (connection_) {
        connection_->close(closeCode);
    }
    end({ECANCELED, "The connection was cancelled"});
}

void BeastWebSocketTask::end(const Error& error) {
    state_ = State::ended;
    endError_ = error;
    // What is under way on the connection holds it until it has ended.
    connection_.reset();
    const auto outgoing = std::exchange(outgoing_, {});
    const auto receivers = std::exchange(receivers_, {});
    for (const Outgoing& waiting : outgoing) {
        waiting.handler(unsent(error));
    }
    for (const ReceiveHandler& receiver : receivers) {
        receiver(error);
    }
    session_->connectionEnded();
}

void BeastWebSocketTask::drop() {
    state_ = State::ended;
    outgoing_.clear();
    receivers_.clear();
    inbox_.clear();
    if (opening_) {
        opening_->cancel();
        opening_.reset();
    }
    connection_.reset();
}

}  // namespace tarvik::linuxdesktop
