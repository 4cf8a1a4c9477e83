// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/AtomicReference.h"
#include "base/OneShot.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/WebSocket.h"

namespace tarvik {

/// The stream of one recording to the live speech service: audio up, transcripts down, over one web
/// socket.
///
/// Order of use: make(), assign the callbacks, connect() once, send() any number of times,
/// finish(). The main thread calls all operations except send(), which the audio delivery thread
/// calls. The session's serial queue delivers the socket's notifications. Fields that several
/// threads use are atomic. A completion is taken with one exchange, so it is called at most once.
///
/// The client needs no teardown: from connect() on, its session holds the client until the
/// connection has ended.
class DeepgramClient : public platform::WebSocketSessionDelegate,
                       public std::enable_shared_from_this<DeepgramClient> {
  public:
    /// The services that a client uses. They outlive the client.
    struct Services {
        platform::WebSocketService& webSockets;
        platform::MainQueue& mainQueue;
        platform::Log& log;
    };

    /// Makes a client. `host` is a host name with an optional ":port". `apiKey` is sent unchanged.
    /// `sampleRate` is the sample rate of the audio in hertz.
    static std::shared_ptr<DeepgramClient> make(Services services, std::string host,
                                                std::string apiKey, std::int64_t sampleRate);

    /// Opens the stream. Calls `completion` (not empty) on the main thread: with true when the
    /// stream is open, with false when it closed or is not open after 5 s. A `host` that cannot be
    /// part of an address is logged, and the completion is never called.
    void connect(std::function<void(bool isOpen)> completion);

    /// Sends one chunk of audio as one message. Drops the chunk while the stream is not open. Any
    /// thread; never blocks.
    void send(std::string pcm);

    /// Announces the end of the audio. Calls `completion` (not empty) on the main thread when the
    /// service has closed the stream, at the latest after 2 s. When the stream is not open, the
    /// completion is called inside this call.
    void finish(std::function<void()> completion);

    void didOpen(platform::WebSocketTask& task, const std::string& protocol) override;
    void didClose(platform::WebSocketTask& task, int closeCode, const std::string& reason) override;

  private:
    DeepgramClient(Services services, std::string host, std::string apiKey,
                   std::int64_t sampleRate);

    void openDeadline();
    void becomeOpen();
    void closeDeadline();
    void receiveLoop();
    void handleReceived(const Result<platform::WebSocketMessage>& result);
    void handle(std::string_view jsonData);
    void reportError(const Error& error) const;

    const std::string apiKey_;
    const std::int64_t sampleRate_;
    AtomicReference<platform::WebSocketTask> task_;
    std::shared_ptr<platform::WebSocketSession> session_;
    std::atomic<bool> isOpen_ = false;
    OneShot<> pendingFinish_;
    OneShot<bool> pendingConnect_;

  public:
    /// Called on the main thread with each transcript (never empty) and whether it is final.
    std::function<void(const std::string& text, bool isFinal)> onTranscript;
    /// Called on the session's serial queue: once for each audio message that could not be sent,
    /// and once with the error that ended receiving.
    std::function<void(const Error&)> onError;

  private:
    const std::string host_;
    platform::WebSocketService& webSockets_;
    platform::MainQueue& mainQueue_;
    platform::Log& log_;
};

}  // namespace tarvik
