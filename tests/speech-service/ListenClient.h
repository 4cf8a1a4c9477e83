// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/speech-service/Speech.h"

namespace tarvik::service {

/// The fields of a service message that tests check.
struct Message {
    std::string type;
    std::string transcript;
    bool isFinal = false;
    bool isSpeechFinal = false;
    bool isFromFinalize = false;
    double start = 0;
    double duration = 0;
    double confidence = 0;
    std::vector<double> wordStarts;
};

/// Parses a message. Throws when a field is missing or has another type.
Message parseMessage(const std::string& json);

/// A blocking client that trusts one authority only. Operations throw on an error.
class ListenClient {
  public:
    /// Connects to localhost and does the TLS handshake.
    ListenClient(std::uint16_t port, const std::filesystem::path& authority);

    /// Makes later requests carry this value of Authorization.
    void authorizeBy(const std::string& authorization) { authorization_ = authorization; }

    /// Opens a stream. True when the service accepts; response() has the response in both cases.
    bool open(const std::string& target, const std::string& subprotocols = "token, a key");

    /// Opens a stream for audio at `rate`, with interim results and punctuation.
    bool openAt(int rate);

    /// Sends a request without an upgrade and reads the response into response().
    void request(const std::string& target);
    /// Sends `bytes` in place of a request and reads the response into response().
    void requestByBytes(const std::string& bytes);

    const boost::beast::http::response<boost::beast::http::string_body>& response() const {
        return response_;
    }

    void sendText(const std::string& text);

    /// Sends audio in messages of `messageSize` bytes.
    void sendAudio(const Audio& audio, std::size_t messageSize = 4096);

    /// Sends audio at `rate` as fast as it was spoken.
    void sendLive(const Audio& audio, int rate);

    /// The next message. Empty after the service has closed the stream.
    std::optional<Message> receive();

    /// All messages until the service closes the stream.
    std::vector<Message> receiveAll();

    /// The code and the reason of the service's close frame.
    const boost::beast::websocket::close_reason& closeReason() const { return socket_.reason(); }

  private:
    void readResponse();

    std::uint16_t port_;
    std::string authorization_;
    boost::asio::io_context context_;
    boost::asio::ssl::context tls_;
    boost::beast::websocket::stream<boost::beast::ssl_stream<boost::asio::ip::tcp::socket>> socket_;
    boost::beast::http::response<boost::beast::http::string_body> response_;
};

/// The final transcripts among `messages`, joined by single spaces.
std::string finalText(const std::vector<Message>& messages);

}  // namespace tarvik::service
