// SPDX-License-Identifier: MIT

#include "speech/DeepgramClient.h"

#include <utility>

#include "base/Required.h"
#include "base/Weakly.h"
#include "speech/ListenUrl.h"
#include "speech/TranscriptMessage.h"

namespace tarvik {

namespace {

constexpr Seconds openTimeout{5.0};
constexpr Seconds closeTimeout{2.0};
constexpr double requestTimeout = 60.0;
constexpr char closeStreamMessage[] = R"({"type":"CloseStream"})";

}  // namespace

DeepgramClient::DeepgramClient(Services services, std::string host, std::string apiKey,
                               std::int64_t sampleRate)
    : apiKey_(std::move(apiKey)),
      sampleRate_(sampleRate),
      host_(std::move(host)),
      webSockets_(services.webSockets),
      mainQueue_(services.mainQueue),
      log_(services.log) {}

std::shared_ptr<DeepgramClient> DeepgramClient::make(Services services, std::string host,
                                                     std::string apiKey, std::int64_t sampleRate) {
    std::shared_ptr<DeepgramClient> client(
        new DeepgramClient(services, std::move(host), std::move(apiKey), sampleRate));
    client->session_ = client->webSockets_.makeSession(client);
    return client;
}

void DeepgramClient::connect(std::function<void(bool isOpen)> completion) {
    const std::optional<std::string> url = listenUrl(host_, sampleRate_);
    if (!url) {
        log_.write("TarvikDictate: \"" + hostForLog(host_) +
                   "\" is not a host to stream to — not connecting");
        return;
    }
    platform::UrlRequest request;
    request.url = *url;
    request.timeoutInterval = requestTimeout;
    request.headerFields.emplace_back("Sec-WebSocket-Protocol", "token, " + apiKey_);
    const std::shared_ptr<platform::WebSocketTask> task = required(session_).webSocketTask(request);
    task_.store(task);
    pendingConnect_.store(std::move(completion));
    task->resume();
    receiveLoop();
    mainQueue_.asyncAfter(openTimeout, weakly(*this, &DeepgramClient::openDeadline));
}

// The socket stays open on purpose: a socket that opens late still carries the recording.
void DeepgramClient::openDeadline() {
    if (const auto completion = pendingConnect_.take()) {
        log_.write("TarvikDictate: Deepgram WS open timeout (5s) — connect failed");
        completion(false);
    }
}

void DeepgramClient::didOpen(platform::WebSocketTask& /*task*/, const std::string& /*protocol*/) {
    mainQueue_.async(weakly(*this, &DeepgramClient::becomeOpen));
}

void DeepgramClient::becomeOpen() {
    isOpen_ = true;
    if (const auto completion = pendingConnect_.take()) {
        completion(true);
    }
}

void DeepgramClient::didClose(platform::WebSocketTask& /*task*/, int /*closeCode*/,
                              const std::string& /*reason*/) {
    isOpen_ = false;
    if (auto completion = pendingConnect_.take()) {
        mainQueue_.async([completion = std::move(completion)] { completion(false); });
    }
    if (auto completion = pendingFinish_.take()) {
        mainQueue_.async(std::move(completion));
    }
}

void DeepgramClient::send(std::string pcm) {
    const std::shared_ptr<platform::WebSocketTask> task = task_.load();
    if (!isOpen_ || !task) {
        return;
    }
    task->send({platform::WebSocketMessage::Kind::data, std::move(pcm)},
               weakly(*this, [](const DeepgramClient& self, const std::optional<Error>& error) {
                   if (error) {
                       self.reportError(*error);
                   }
               }));
}

void DeepgramClient::finish(std::function<void()> completion) {
    const std::shared_ptr<platform::WebSocketTask> task = task_.load();
    if (!isOpen_ || !task) {
        completion();
        return;
    }
    // A send error needs no handling, because the close deadline ends the stream in any case.
    task->send({platform::WebSocketMessage::Kind::string, closeStreamMessage},
               [](const std::optional<Error>&) {});
    pendingFinish_.store(std::move(completion));
    mainQueue_.asyncAfter(closeTimeout, weakly(*this, &DeepgramClient::closeDeadline));
}

void DeepgramClient::closeDeadline() {
    isOpen_ = false;
    if (const std::shared_ptr<platform::WebSocketTask> task = task_.take()) {
        task->cancel(platform::closeCodeGoingAway);
    }
    if (const auto completion = pendingFinish_.take()) {
        completion();
    }
}

void DeepgramClient::receiveLoop() {
    if (const std::shared_ptr<platform::WebSocketTask> task = task_.load()) {
        task->receive(weakly(*this, &DeepgramClient::handleReceived));
    }
}

void DeepgramClient::handleReceived(const Result<platform::WebSocketMessage>& result) {
    if (!result) {
        reportError(result.error());
        return;
    }
    if (result.value().kind != platform::WebSocketMessage::Kind::other) {
        handle(result.value().bytes);
    }
    if (isOpen_) {
        receiveLoop();
    }
}

// A message without a transcript is dropped without a log line: the service sends several kinds of
// messages, and may add new kinds at any time.
void DeepgramClient::handle(std::string_view jsonData) {
    std::optional<TranscriptMessage> message = parseTranscriptMessage(jsonData);
    if (!message) {
        return;
    }
    // Holds the client strongly, so that the transcript is delivered even when the owner has
    // released the client.
    mainQueue_.async([self = shared_from_this(), message = std::move(*message)] {
        if (self->onTranscript) {
            self->onTranscript(message.text, message.isFinal);
        }
    });
}

void DeepgramClient::reportError(const Error& error) const {
    if (onError) {
        onError(error);
    }
}

}  // namespace tarvik
