// SPDX-License-Identifier: MIT

#include "tests/speech-service/ListenClient.h"

#include <simdjson.h>

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <chrono>
#include <span>
#include <thread>

namespace tarvik::service {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;

namespace {

asio::ssl::context trusting(const std::filesystem::path& authority) {
    asio::ssl::context tls(asio::ssl::context::tls_client);
    tls.load_verify_file(authority.string());
    tls.set_verify_mode(asio::ssl::verify_peer);
    tls.set_verify_callback(asio::ssl::host_name_verification("localhost"));
    return tls;
}

}  // namespace

Message parseMessage(const std::string& json) {
    simdjson::dom::parser parser;
    const simdjson::dom::element root = parser.parse(simdjson::padded_string(json));
    Message message;
    message.type = std::string(root["type"].get_string().value());
    if (message.type == "SpeechStarted" || message.type == "UtteranceEnd") {
        return message;
    }
    message.duration = root["duration"].get_double().value();
    if (message.type != "Results") {
        return message;
    }
    message.start = root["start"].get_double().value();
    message.isFinal = root["is_final"].get_bool().value();
    message.isSpeechFinal = root["speech_final"].get_bool().value();
    message.isFromFinalize = root["from_finalize"].get_bool().value();
    const simdjson::dom::element best = root["channel"]["alternatives"].at(0).value();
    message.transcript = std::string(best["transcript"].get_string().value());
    message.confidence = best["confidence"].get_double().value();
    const simdjson::dom::array words = best["words"].get_array().value();
    for (const simdjson::dom::element word : words) {
        message.wordStarts.push_back(word["start"].get_double().value());
    }
    return message;
}

ListenClient::ListenClient(std::uint16_t port, const std::filesystem::path& authority)
    : port_(port), tls_(trusting(authority)), socket_(context_, tls_) {
    tcp::resolver resolver(context_);
    asio::connect(beast::get_lowest_layer(socket_),
                  resolver.resolve("localhost", std::to_string(port)));
    socket_.next_layer().handshake(asio::ssl::stream_base::client);
}

bool ListenClient::open(const std::string& target, const std::string& subprotocols) {
    socket_.set_option(beast::websocket::stream_base::decorator(
        [subprotocols, authorization = authorization_](beast::websocket::request_type& request) {
            if (!authorization.empty()) {
                request.set(beast::http::field::authorization, authorization);
            }
            if (!subprotocols.empty()) {
                request.set(beast::http::field::sec_websocket_protocol, subprotocols);
            }
        }));
    beast::websocket::response_type response;
    beast::error_code error;
    socket_.handshake(response, "localhost:" + std::to_string(port_), target, error);
    response_ = response;
    return !error;
}

bool ListenClient::openAt(int rate) {
    return open("/v1/listen?punctuate=true&interim_results=true&encoding=linear16&sample_rate=" +
                std::to_string(rate) + "&channels=1");
}

void ListenClient::request(const std::string& target) {
    beast::http::request<beast::http::empty_body> request(beast::http::verb::get, target, 11);
    request.set(beast::http::field::host, "localhost");
    beast::http::write(socket_.next_layer(), request);
    readResponse();
}

void ListenClient::requestByBytes(const std::string& bytes) {
    asio::write(socket_.next_layer(), asio::buffer(bytes));
    readResponse();
}

void ListenClient::readResponse() {
    beast::flat_buffer buffer;
    beast::http::read(socket_.next_layer(), buffer, response_);
}

void ListenClient::sendText(const std::string& text) {
    socket_.text(true);
    socket_.write(asio::buffer(text));
}

void ListenClient::sendAudio(const Audio& audio, std::size_t messageSize) {
    socket_.binary(true);
    for (std::size_t sent = 0; sent < audio.size(); sent += messageSize) {
        socket_.write(
            asio::buffer(audio.data() + sent, std::min(messageSize, audio.size() - sent)));
    }
}

void ListenClient::sendLive(const Audio& audio, int rate) {
    constexpr std::chrono::milliseconds chunkLength{100};
    const auto chunkSize = static_cast<std::size_t>(rate / 10 * 2);
    auto next = std::chrono::steady_clock::now();
    for (std::size_t sent = 0; sent < audio.size(); sent += chunkSize) {
        next += chunkLength;
        std::this_thread::sleep_until(next);
        const auto chunk = std::span(audio).subspan(sent, std::min(chunkSize, audio.size() - sent));
        sendAudio({chunk.begin(), chunk.end()});
    }
}

std::optional<Message> ListenClient::receive() {
    beast::flat_buffer buffer;
    beast::error_code error;
    socket_.read(buffer, error);
    if (error == beast::websocket::error::closed) {
        return std::nullopt;
    }
    if (error) {
        throw beast::system_error(error);
    }
    return parseMessage(beast::buffers_to_string(buffer.data()));
}

std::vector<Message> ListenClient::receiveAll() {
    std::vector<Message> messages;
    while (std::optional<Message> message = receive()) {
        messages.push_back(*std::move(message));
    }
    return messages;
}

std::string finalText(const std::vector<Message>& messages) {
    std::string text;
    for (const Message& message : messages) {
        if (message.isFinal && !message.transcript.empty()) {
            text += (text.empty() ? "" : " ") + message.transcript;
        }
    }
    return text;
}

}  // namespace tarvik::service
