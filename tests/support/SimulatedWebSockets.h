// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/WebSocket.h"
#include "tests/support/Journal.h"
#include "tests/support/SerialQueue.h"
#include "tests/support/SimulatedTime.h"
#include "tests/support/SimulatedWebSocketTask.h"

namespace tarvik::simulated {

/// A session. A test can run its delegate queue.
class SimulatedWebSocketSession final
    : public platform::WebSocketSession,
      public std::enable_shared_from_this<SimulatedWebSocketSession> {
  public:
    SimulatedWebSocketSession(SimulatedTime& time, Journal& journal,
                              const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate);

    std::shared_ptr<platform::WebSocketTask> webSocketTask(
        const platform::UrlRequest& request) override;

    /// Runs the delegate queue, on the calling thread, until it is empty.
    void runDelegateQueue() { queue_->runAll(); }
    SerialQueue& delegateQueue() { return *queue_; }
    /// The connections made so far, from first to last.
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks() const;
    /// Releases the delegate. The connections go on.
    void releaseDelegate();
    /// Releases the delegate and everything that waits.
    void abandon();

  private:
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate() const;
    void releaseDelegateLater();

    SimulatedTime& time_;
    Journal& journal_;
    const std::shared_ptr<SerialQueue> queue_ = std::make_shared<SerialQueue>();
    const std::weak_ptr<platform::WebSocketSessionDelegate> weakDelegate_;
    mutable std::mutex mutex_;
    std::shared_ptr<platform::WebSocketSessionDelegate> heldDelegate_;
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks_;
};

/// A web-socket service whose connections end at the test.
///
/// The delegate queues run whenever SimulatedTime runs. After setAutomatic(false) they run only
/// when the test runs them.
class SimulatedWebSockets final : public platform::WebSocketService {
  public:
    SimulatedWebSockets(SimulatedTime& time, Journal& journal);
    ~SimulatedWebSockets() override;

    std::shared_ptr<platform::WebSocketSession> makeSession(
        std::shared_ptr<platform::WebSocketSessionDelegate> delegate) override;

    void setAutomatic(bool automatic) { isAutomatic_ = automatic; }
    /// Runs all delegate queues, on the calling thread, until they are empty.
    void runDelegateQueues();
    /// Whether a block of a delegate queue is running on the calling thread.
    bool isOnDelegateQueue() const;

    const std::vector<std::shared_ptr<SimulatedWebSocketSession>>& sessions() const {
        return sessions_;
    }
    /// The connections of all sessions, from first to last.
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks() const;
    /// The latest connection, which must exist.
    SimulatedWebSocketTask& lastTask() const;

    /// Releases all delegates. Blocks that wait on the delegate queues still run.
    void releaseDelegates();
    /// Releases all delegates and everything that waits. The sessions are unusable after this.
    void abandon();

  private:
    bool runOne();

    SimulatedTime& time_;
    Journal& journal_;
    bool isAutomatic_ = true;
    std::vector<std::shared_ptr<SimulatedWebSocketSession>> sessions_;
};

}  // namespace tarvik::simulated
