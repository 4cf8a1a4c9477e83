#pragma once

#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/WebSocket.h"
#include "platform/linux/websocket/SerialThread.h"
#include "platform/linux/websocket/SessionSurroundings.h"

namespace tarvik::linuxdesktop {

class BeastWebSocketTask;
class Connection;

/// What a session shares with its connections: the thread, and the delegate, which is held while a
/// connection is there and for some time after.
class SessionState final : public std::enable_shared_from_this<SessionState> {
  public:
    SessionState(std::shared_ptr<SessionThreads> threads,
                 std::shared_ptr<const SessionSurroundings> surroundings,
                 const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate);

    const std::shared_ptr<SerialThread>& thread() const { return thread_; }
    const std::shared_ptr<const SessionSurroundings>& surroundings() const { return surroundings_; }
    /// Empty once it is gone. Any thread.
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate() const;

    /// A connection is there from now on. Main thread.
    void connectionMade(const std::shared_ptr<BeastWebSocketTask>& task);
    /// Cuts `connection` when the session is closed, even if its task has gone. On the session's
    /// thread.
    void connectionOpened(const std::shared_ptr<Connection>& connection);
    /// One connection has ended. On the session's thread.
    void connectionEnded();

    /// Drops the connections and lets the thread end; nothing is run any more. Main thread.
    void close();
    /// Lets the delegate go. Any thread.
    void releaseDelegate();

  private:
    void onLingered();
    void closeOnThread();

    const std::shared_ptr<SerialThread> thread_;
    const std::shared_ptr<const SessionSurroundings> surroundings_;
    const std::weak_ptr<platform::WebSocketSessionDelegate> delegate_;
    boost::asio::steady_timer linger_;

    std::mutex mutex_;
    std::shared_ptr<platform::WebSocketSessionDelegate> heldDelegate_;
    std::vector<std::weak_ptr<BeastWebSocketTask>> tasks_;
    int connectionCount_ = 0;
    /// On the session's thread.
    std::vector<std::weak_ptr<Connection>> openConnections_;
};

}  // namespace tarvik::linuxdesktop
