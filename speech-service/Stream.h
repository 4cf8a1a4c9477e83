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
#include "speech-service/Handshake.h"
#include "speech-service/StreamRegistry.h"

namespace tarvik::service {

/// One open web socket: audio in, messages out.
///
/// On the server's executor only. It keeps itself alive while the socket is open or
/// its audio is being decoded.
class Stream : public OpenConnection, public std::enable_shared_from_this<Stream> {
  public:
    /// `idleTimeout` is how long a client may send neither audio nor a KeepAlive message.
    Stream(network::TlsStream socket, StreamQuery query, std::string requestId,
           std::shared_ptr<DecoderPool> decoders, Seconds idleTimeout);

    /// Answers the upgrade that `request` asks for and serves the stream.
    void accept(const Request& request);

    /// Closes with 1001.
    void goAway() override;

  private:
    void onAccepted(boost::beast::error_code error);
    void read();
    void onRead(boost::beast::error_code error);
    void onAudio();
    void onText();
    void endAndClose(const boost::beast::websocket::close_reason& reason);
    void expectAudio();
    void startTimer(Seconds interval, void (Stream::*onExpired)());
    void onIdle();
    void onUtterance(const Utterance& utterance);
    void onRoom();
    void onDecoderEnd(const std::optional<Error>& error);
    void send(std::string message);
    void write();
    void onWritten(boost::beast::error_code error);
    void closeWhenSent(boost::beast::websocket::close_reason reason);
    void closeNow();
    void abandon();
    void log(const std::string& line) const;

    boost::beast::websocket::stream<network::TlsStream> socket_;
    const StreamQuery query_;
    const std::string requestId_;
    const std::string created_;
    const std::shared_ptr<DecoderPool> decoders_;
    const Seconds idleTimeout_;
    /// First for the audio that does not come, then for the closing that does not end.
    boost::asio::steady_timer timer_;
    boost::beast::flat_buffer incoming_;
    std::deque<std::string> outgoing_;
    std::shared_ptr<DecodeWorker> worker_;
    /// Reading waits until the worker has caught up.
    bool isPaused_ = false;
    /// No more audio is taken; this is how the stream will close.
    std::optional<boost::beast::websocket::close_reason> ending_;
    std::optional<boost::beast::websocket::close_reason> closing_;
};

}  // namespace tarvik::service
