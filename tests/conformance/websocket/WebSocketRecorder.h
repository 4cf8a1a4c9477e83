// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/WebSocket.h"

namespace tarvik::tests {

/// A delegate that records each notification and each handler call as one event:
/// "open token", "text hello", "data …", "close 1000 bye", "failed receive", "sent a", "failed a".
class WebSocketRecorder final : public platform::WebSocketSessionDelegate,
                                public std::enable_shared_from_this<WebSocketRecorder> {
  public:
    void didOpen(platform::WebSocketTask& task, const std::string& protocol) override;
    void didClose(platform::WebSocketTask& task, int closeCode, const std::string& reason) override;

    /// Asks for one message.
    void receive(platform::WebSocketTask& task);
    /// Asks for messages one after another until an error.
    void receiveAll(const std::shared_ptr<platform::WebSocketTask>& task);
    /// Sends `text` and records the call of the handler under `text`.
    void sendText(platform::WebSocketTask& task, const std::string& text);

    std::vector<std::string> events() const;
    std::size_t count(const std::string& event) const;
    bool has(const std::string& event) const { return count(event) > 0; }
    /// The error of the last receive or send that failed.
    Error lastError() const;
    /// The threads of all notifications and handler calls.
    std::set<std::thread::id> threads() const;
    /// Whether two notifications or handler calls overlapped in time.
    bool wasConcurrent() const { return wasConcurrent_; }

  private:
    class Notification;
    void add(std::string event);
    void addReceived(const Result<platform::WebSocketMessage>& result);

    mutable std::mutex mutex_;
    std::vector<std::string> events_;
    Error lastError_;
    std::set<std::thread::id> threads_;
    std::atomic<int> activeNotifications_{0};
    std::atomic<bool> wasConcurrent_{false};
};

}  // namespace tarvik::tests
