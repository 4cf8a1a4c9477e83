// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/WebSocket.h"
#include "platform/linux/websocket/SerialThread.h"
#include "platform/linux/websocket/SessionContext.h"

namespace tarvik::linuxdesktop {

class BeastWebSocketTask;
class Connection;

/// A session of BeastWebSocketService: the serial queue and the delegate of its tasks.
///
/// The session holds its delegate from the first task until the hold time after the end of the
/// last connection.
class BeastWebSocketSession final : public platform::WebSocketSession,
                                    public std::enable_shared_from_this<BeastWebSocketSession> {
  public:
    BeastWebSocketSession(std::shared_ptr<ThreadRegistry> threads,
                          std::shared_ptr<SessionContext> context,
                          const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate);

    std::shared_ptr<platform::WebSocketTask> webSocketTask(
        const platform::UrlRequest& request) override;

    const std::shared_ptr<SerialThread>& thread() const { return thread_; }
    const std::shared_ptr<SessionContext>& context() const { return context_; }
    /// Empty after the delegate's destruction. Any thread.
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate() const;

    /// Registers `connection`, which close() aborts. On the session's thread.
    void connectionOpened(const std::shared_ptr<Connection>& connection);
    /// Starts the hold time when a task has ended. On the session's thread.
    void connectionEnded();

    /// Aborts the connections and lets the thread end; no handler runs after that. A new task does
    /// not hold the delegate any more. Main thread.
    void close();
    /// Releases the delegate. Any thread.
    void releaseDelegate();

  private:
    void onHoldTimeOver();
    void closeOnThread();

    const std::shared_ptr<SerialThread> thread_;
    const std::shared_ptr<SessionContext> context_;
    const std::weak_ptr<platform::WebSocketSessionDelegate> delegate_;
    /// Made on the session's thread, for the end of the first connection.
    std::optional<boost::asio::steady_timer> holdTimer_;

    std::mutex mutex_;
    std::shared_ptr<platform::WebSocketSessionDelegate> heldDelegate_;
    std::vector<std::weak_ptr<BeastWebSocketTask>> tasks_;
    int connectionCount_ = 0;
    bool isClosed_ = false;

    /// Includes connections in a close handshake, whose task may be gone. On the session's thread.
    std::vector<std::weak_ptr<Connection>> connections_;
};

}  // namespace tarvik::linuxdesktop
