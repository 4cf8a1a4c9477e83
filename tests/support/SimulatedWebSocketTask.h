// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/WebSocket.h"
#include "tests/support/SerialQueue.h"
#include "tests/support/SimulatedTime.h"

namespace tarvik::simulated {

/// A connection whose other end is the test. The operations of the service (open, close, deliver,
/// …) only queue their event. The events happen in order when the session's delegate queue runs.
/// Any thread.
class SimulatedWebSocketTask final : public platform::WebSocketTask,
                                     public std::enable_shared_from_this<SimulatedWebSocketTask> {
  public:
    enum class State { created, connecting, open, ended };

    /// What the task needs from its session.
    struct Context {
        std::shared_ptr<SerialQueue> queue;
        std::function<std::shared_ptr<platform::WebSocketSessionDelegate>()> delegate;
        std::function<void()> onEnd;
        /// Gets a line for each message that is handed over, and for each cancel: "send
        /// {"type":"CloseStream"}", "send 2 bytes", "cancel 1001". Any thread.
        std::function<void(std::string)> onCall;
    };

    SimulatedWebSocketTask(SimulatedTime& time, Context context, platform::UrlRequest request);

    void resume() override;
    void send(platform::WebSocketMessage message, SendHandler handler) override;
    void receive(ReceiveHandler handler) override;
    void cancel(int closeCode) override;

    /// The service accepts the connection.
    void open(const std::string& protocol = "token");
    /// The service sends a close frame: the delegate is notified, then all waiting handlers get an
    /// error.
    void close(int code = 1000, const std::string& reason = {});
    /// Only notifies the delegate of a close. The connection goes on with its queued events.
    void notifyClose(int code = 1000, const std::string& reason = {});
    /// The service sends a message.
    void deliverText(std::string text);
    void deliverData(std::string bytes);
    void deliverOther();
    /// The connection is lost or refused: all waiting handlers get `error`, and the delegate is not
    /// notified.
    void fail(Error error);
    /// Makes the next send fail. The connection goes on.
    void failNextSend(Error error);

    State state() const;
    const platform::UrlRequest& request() const { return request_; }
    /// The value of a header field of the request; nothing when the field is absent.
    std::optional<std::string> header(const std::string& name) const;
    /// The sent messages, from first to last.
    std::vector<platform::WebSocketMessage> sent() const;
    std::size_t sentMessages() const;
    /// The payloads of the sent messages of one kind.
    std::vector<std::string> sentTexts() const;
    std::vector<std::string> sentData() const;
    /// The close codes of all cancels, in any state.
    std::vector<int> cancels() const;
    bool hasWaitingReceive() const;
    /// How often receive() was called.
    int receives() const;
    /// The maximum number of receives that waited at the same time.
    int maxWaitingReceives() const;
    int resumes() const;
    /// The calls in order: "resume", "send", "receive", "cancel".
    std::vector<std::string> operations() const;

    /// Ends the task without calling any handler or the delegate.
    void abandon();

  private:
    struct Waiting {
        platform::WebSocketMessage message;
        SendHandler handler;
    };

    std::vector<std::string> sentOfKind(platform::WebSocketMessage::Kind kind) const;
    void deliver(platform::WebSocketMessage message);
    void queueEnd(Error error);
    void endNow(const Error& error);
    void queueTransmission(platform::WebSocketMessage message, SendHandler handler);

    SimulatedTime& time_;
    const Context context_;
    const platform::UrlRequest request_;

    mutable std::mutex mutex_;
    State state_ = State::created;
    Error endError_;
    std::deque<platform::WebSocketMessage> inbox_;
    std::vector<ReceiveHandler> waitingReceives_;
    std::vector<Waiting> waitingSends_;
    std::optional<Error> nextSendFailure_;
    std::vector<platform::WebSocketMessage> sent_;
    std::vector<int> cancels_;
    int receives_ = 0;
    int maxWaitingReceives_ = 0;
    int resumes_ = 0;
    std::vector<std::string> operations_;
};

}  // namespace tarvik::simulated
