// SPDX-License-Identifier: MIT

#include "speech-service/Stream.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <chrono>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "base/Weakly.h"
#include "speech-service/ControlMessage.h"
#include "speech-service/ServiceMessages.h"

namespace tarvik::service {

namespace beast = boost::beast;
namespace websocket = beast::websocket;

namespace {

constexpr std::size_t maxMessageSize = std::size_t{16} * 1024 * 1024;
constexpr std::size_t maxUnsentMessages = 1000;
constexpr std::chrono::seconds closeTimeout{2};

websocket::stream_base::timeout timeouts() {
    websocket::stream_base::timeout timeouts{};
    // Beast uses this timeout for the close handshake too.
    timeouts.handshake_timeout = closeTimeout;
    timeouts.idle_timeout = websocket::stream_base::none();
    timeouts.keep_alive_pings = false;
    return timeouts;
}

std::string timeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::ostringstream text;
    text << std::put_time(&utc, "%Y-%m-%dT%H:%M:%SZ");
    return text.str();
}

}  // namespace

Stream::Stream(network::TlsStream socket, Handshake handshake, std::string requestId,
               const ServerContext& context)
    : socket_(std::move(socket)),
      handshake_(std::move(handshake)),
      requestId_(std::move(requestId)),
      created_(timeNow()),
      decoders_(context.decoders),
      metrics_(context.metrics),
      roomTimer_(context.roomTimer),
      idleTimeout_(context.options.idleTimeout),
      audioTimeout_(context.options.audioTimeout),
      closeDeadline_(context.options.closeDeadline),
      idleTimer_(socket_.get_executor()),
      audioTimer_(socket_.get_executor()) {}

Stream::~Stream() {
    roomTimer_->cancel();
}

void Stream::accept(const Request& request) {
    socket_.set_option(timeouts());
    socket_.read_message_max(maxMessageSize);
    socket_.set_option(
        websocket::stream_base::decorator([this](websocket::response_type& response) {
            response.set(requestIdField, requestId_);
            if (!handshake_.subprotocol.empty()) {
                response.set(beast::http::field::sec_websocket_protocol, handshake_.subprotocol);
            }
        }));
    socket_.async_accept(request,
                         beast::bind_front_handler(&Stream::onAccepted, shared_from_this()));
}

void Stream::onAccepted(beast::error_code error) {
    if (error) {
        log("the upgrade failed: " + error.message());
        return;
    }
    const StreamQuery& query = handshake_.query;
    worker_ = DecodeWorker::start(socket_.get_executor(), decoders_,
                                  {query.sampleRate, query.recognition, closeDeadline_, metrics_},
                                  callbacks());
    if (closing_) {
        closeNow();
        return;
    }
    restartTimeouts();
    read();
}

DecodeWorker::Callbacks Stream::callbacks() {
    DecodeWorker::Callbacks callbacks;
    // Strong references: nothing else holds the stream while reading is paused.
    callbacks.onUtterance = beast::bind_front_handler(&Stream::onUtterance, shared_from_this());
    callbacks.onSpeechStarted = [self = shared_from_this()](Seconds time) {
        self->send(speechStartedMessage(time));
    };
    callbacks.onUtteranceEnd = [self = shared_from_this()](Seconds lastWordEnd) {
        self->send(utteranceEndMessage(lastWordEnd));
    };
    callbacks.onDrained = beast::bind_front_handler(&Stream::onDrained, shared_from_this());
    callbacks.onEnd = beast::bind_front_handler(&Stream::onDecoderEnd, shared_from_this());
    return callbacks;
}

void Stream::read() {
    socket_.async_read(
        incoming_,
        [self = shared_from_this()](beast::error_code error, std::size_t) { self->onRead(error); });
}

void Stream::onRead(beast::error_code error) {
    if (error) {
        if (error != websocket::error::closed && !closing_) {
            log("the client is gone: " + error.message());
        }
        end();
        return;
    }
    if (socket_.got_binary()) {
        onAudio();
    } else {
        onText();
    }
    incoming_.clear();
    if (!isReadingPaused_) {
        read();
    }
}

void Stream::onAudio() {
    const auto* bytes = static_cast<const std::uint8_t*>(incoming_.data().data());
    if (ending_ || incoming_.size() == 0) {
        return;
    }
    restartTimeouts();
    digest_.add({bytes, incoming_.size()});
    isReadingPaused_ = !worker_->append({bytes, bytes + incoming_.size()});
}

void Stream::onText() {
    const auto* text = static_cast<const char*>(incoming_.data().data());
    const std::optional<ControlMessage> message = parseControlMessage({text, incoming_.size()});
    if (!message) {
        log("a text message that means nothing here was ignored");
        return;
    }
    if (ending_) {
        return;
    }
    switch (*message) {
        case ControlMessage::closeStream:
            endAndClose(websocket::close_code::normal);
            break;
        case ControlMessage::finalize:
            worker_->finalize();
            break;
        case ControlMessage::keepAlive:
            restartIdleTimer();
            break;
    }
}

void Stream::endAndClose(const websocket::close_reason& reason) {
    ending_ = reason;
    cancelTimeouts();
    worker_->end();
}

void Stream::restartTimeouts() {
    startTimer(audioTimer_, audioTimeout_, &Stream::onAudioTimeout);
    restartIdleTimer();
}

void Stream::restartIdleTimer() {
    startTimer(idleTimer_, idleTimeout_, &Stream::onIdleTimeout);
}

void Stream::cancelTimeouts() {
    idleTimer_.cancel();
    audioTimer_.cancel();
}

void Stream::startTimer(boost::asio::steady_timer& timer, Seconds interval,
                        void (Stream::*onExpired)()) {
    timer.expires_after(std::chrono::duration_cast<std::chrono::steady_clock::duration>(interval));
    timer.async_wait(weakly(*this, [onExpired](Stream& self, beast::error_code error) {
        if (!error) {
            (self.*onExpired)();
        }
    }));
}

void Stream::onIdleTimeout() {
    endForSilence("NET-0001: neither audio nor a KeepAlive message came in time");
}

void Stream::onAudioTimeout() {
    endForSilence("NET-0001: no audio came in time");
}

void Stream::endForSilence(const char* reason) {
    if (ending_ || closing_) {
        return;
    }
    // The client may have sent audio that a paused reading has not seen.
    if (isReadingPaused_) {
        restartTimeouts();
        return;
    }
    log("no audio came in time");
    endAndClose({websocket::close_code::internal_error, reason});
}

void Stream::onUtterance(const Utterance& utterance) {
    send(resultsMessage(utterance, handshake_.query.style, decoders_->info(), requestId_));
}

void Stream::onDrained() {
    if (isReadingPaused_) {
        isReadingPaused_ = false;
        restartTimeouts();
        read();
    }
}

void Stream::onDecoderEnd(const std::optional<Error>& error) {
    if (error) {
        log(error->localizedDescription);
        closeWhenSent({websocket::close_code::internal_error, "NET-0000: no recognizer"});
        return;
    }
    send(metadataMessage({requestId_, created_, worker_->appended(), digest_.text()},
                         decoders_->info()));
    closeWhenSent(*ending_);
}

void Stream::send(std::string message) {
    if (closing_) {
        return;
    }
    if (outgoing_.size() == maxUnsentMessages) {
        abort();
        return;
    }
    outgoing_.push_back(std::move(message));
    if (outgoing_.size() == 1) {
        write();
    }
}

void Stream::write() {
    socket_.text(true);
    socket_.async_write(boost::asio::buffer(outgoing_.front()),
                        [self = shared_from_this()](beast::error_code error, std::size_t) {
                            self->onWritten(error);
                        });
}

void Stream::onWritten(beast::error_code error) {
    if (error) {
        // The pending read fails too and logs the error.
        return;
    }
    outgoing_.pop_front();
    if (!outgoing_.empty()) {
        write();
    } else if (closing_) {
        closeNow();
    }
}

void Stream::closeWhenSent(websocket::close_reason reason) {
    if (closing_) {
        return;
    }
    closing_ = std::move(reason);
    // A client that stops reading would hold the last message and the stream forever.
    cancelTimeouts();
    startTimer(idleTimer_, closeTimeout * 2, &Stream::abort);
    if (outgoing_.empty()) {
        closeNow();
    }
}

void Stream::closeNow() {
    socket_.async_close(*closing_, [self = shared_from_this()](beast::error_code) {
        // An error means that the stream was closed already.
        self->end();
    });
}

void Stream::end() {
    hasEnded_ = true;
    cancelTimeouts();
    worker_->cancel();
}

void Stream::abort() {
    log("the client does not take its messages");
    beast::error_code ignored;  // Closing fails only for a socket that is closed already.
    beast::get_lowest_layer(socket_).close(ignored);
}

void Stream::goAway() {
    if (worker_) {
        closeWhenSent(websocket::close_code::going_away);
        worker_->cancel();
    } else {
        closing_ = websocket::close_code::going_away;
    }
}

void Stream::log(const std::string& line) const {
    std::cerr << "stream " + requestId_ + ": " + line + "\n";
}

}  // namespace tarvik::service
