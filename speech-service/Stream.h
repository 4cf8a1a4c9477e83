// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "network/TlsStream.h"
#include "speech-service/DecodeWorker.h"
#include "speech-service/Digest.h"
#include "speech-service/Handshake.h"
#include "speech-service/OpenConnection.h"
#include "speech-service/ServerContext.h"

namespace tarvik::service {

/// One open web socket: audio in, messages out.
///
/// On the server's executor only. Pending socket operations and the decode worker hold the stream.
class Stream : public OpenConnection, public std::enable_shared_from_this<Stream> {
  public:
    /// Takes what it needs of `context`, which the stream may outlive.
    Stream(network::TlsStream socket, Handshake handshake, std::string requestId,
           const ServerContext& context);
    ~Stream() override;

    /// Accepts the upgrade `request` and serves the stream.
    void accept(const Request& request);

    /// Closes with 1001.
    void goAway() override;

    bool hasEnded() const override { return hasEnded_; }

  private:
    DecodeWorker::Callbacks callbacks();
    void onAccepted(boost::beast::error_code error);
    void read();
    void onRead(boost::beast::error_code error);
    void onAudio();
    void onText();
    void endAndClose(const boost::beast::websocket::close_reason& reason);
    void restartIdleTimer();
    void restartTimeouts();
    void cancelTimeouts();
    void startTimer(boost::asio::steady_timer& timer, Seconds interval,
                    void (Stream::*onExpired)());
    void onIdleTimeout();
    void onAudioTimeout();
    void endForSilence(const char* reason);
    void onUtterance(const Utterance& utterance);
    void onDrained();
    void onDecoderEnd(const std::optional<Error>& error);
    void send(std::string message);
    void write();
    void onWritten(boost::beast::error_code error);
    void closeWhenSent(boost::beast::websocket::close_reason reason);
    void closeNow();
    void end();
    void abort();
    void log(const std::string& line) const;

    boost::beast::websocket::stream<network::TlsStream> socket_;
    const Handshake handshake_;
    const std::string requestId_;
    const std::string created_;
    const std::shared_ptr<DecoderPool> decoders_;
    const std::shared_ptr<Metrics> metrics_;
    const std::shared_ptr<boost::asio::steady_timer> roomTimer_;
    const Seconds idleTimeout_;
    const Seconds audioTimeout_;
    const Seconds closeDeadline_;
    /// Measures the idle timeout, and later the close timeout.
    boost::asio::steady_timer idleTimer_;
    boost::asio::steady_timer audioTimer_;
    boost::beast::flat_buffer incoming_;
    std::deque<std::string> outgoing_;
    Digest digest_;
    std::shared_ptr<DecodeWorker> worker_;
    /// Reading waits for the worker's onDrained.
    bool isReadingPaused_ = false;
    /// Set when the stream accepts no more audio: the reason for closing after the last message.
    std::optional<boost::beast::websocket::close_reason> ending_;
    /// Set when the close handshake waits only for the queued messages.
    std::optional<boost::beast::websocket::close_reason> closing_;
    /// Set when the client is gone. The worker, which ends soon, still holds the stream.
    bool hasEnded_ = false;
};

}  // namespace tarvik::service
