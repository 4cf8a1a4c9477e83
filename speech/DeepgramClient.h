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
/// Order of use: make, assign the callbacks, connect() once, send() any number of times, finish().
/// The main thread calls it, send() excepted, which belongs to the audio delivery thread. The
/// session's serial queue brings the notifications of the socket. What these threads share is
/// atomic, and a completion is taken out of its field in one exchange, so that it is delivered at
/// most once.
///
/// It has no teardown: once connected, its session keeps it alive until the connection has ended.
class DeepgramClient : public platform::WebSocketSessionDelegate,
                       public std::enable_shared_from_this<DeepgramClient> {
  public:
    /// What a client uses; all outlive it.
    struct Services {
        platform::WebSocketService& webSockets;
        platform::MainQueue& mainQueue;
        platform::Log& log;
    };

    /// `host` is a host name with an optional ":port", `apiKey` is sent as it is, `sampleRate` is
    /// that of the audio, in hertz.
    static std::shared_ptr<DeepgramClient> make(Services services, std::string host,
                                                std::string apiKey, std::int64_t sampleRate);

    /// Opens the stream. The completion (not empty) comes on the main thread: true once it is open,
    /// false when it closed before that or is not open after 5 seconds. A host that gives no
    /// address is logged, and the completion then never comes.
    void connect(std::function<void(bool isOpen)> completion);

    /// Sends one chunk of audio as one message; dropped while the stream is not open. Any thread;
    /// never blocks.
    void send(std::string pcm);

    /// Says that no more audio comes and calls `completion` (not empty) on the main thread once the
    /// service has closed the stream, after 2 seconds at the latest; at once, inside the call, when
    /// the stream is not open.
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
    /// A transcript (never empty) and whether it is final. Main thread.
    std::function<void(const std::string& text, bool isFinal)> onTranscript;
    /// A message could not be sent, or no more can be received: once for each message of audio that
    /// was given to a lost connection, and once for the end of receiving. The session's serial
    /// queue.
    std::function<void(const Error&)> onError;

  private:
    const std::string host_;
    platform::WebSocketService& webSockets_;
    platform::MainQueue& mainQueue_;
    platform::Log& log_;
};

}  // namespace tarvik
