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

/// A session whose delegate queue a test runs.
class SimulatedWebSocketSession final
    : public platform::WebSocketSession,
      public std::enable_shared_from_this<SimulatedWebSocketSession> {
  public:
    SimulatedWebSocketSession(SimulatedTime& time, Journal& journal,
                              const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate);

    std::shared_ptr<platform::WebSocketTask> webSocketTask(
        const platform::UrlRequest& request) override;

    /// Runs the delegate queue, on the calling thread, until nothing waits on it.
    void runDelegateQueue() { queue_->runAll(); }
    SerialQueue& delegateQueue() { return *queue_; }
    /// The connections made, from first to last.
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks() const;
    /// Lets the delegate go; its connections go on.
    void letDelegateGo();
    /// Lets the delegate and everything that waits go.
    void abandon();

  private:
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate() const;
    void connectionEnded();

    SimulatedTime& time_;
    Journal& journal_;
    const std::shared_ptr<SerialQueue> queue_ = std::make_shared<SerialQueue>();
    const std::weak_ptr<platform::WebSocketSessionDelegate> weakDelegate_;
    mutable std::mutex mutex_;
    std::shared_ptr<platform::WebSocketSessionDelegate> heldDelegate_;
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks_;
};

/// Sessions whose other end is the test.
///
/// At first the delegate queues run along with SimulatedTime, whenever it runs; after
/// setAutomatic(false) they run only when the test runs them.
class SimulatedWebSockets final : public platform::WebSocketService {
  public:
    SimulatedWebSockets(SimulatedTime& time, Journal& journal);
    ~SimulatedWebSockets() override;

    std::shared_ptr<platform::WebSocketSession> makeSession(
        std::shared_ptr<platform::WebSocketSessionDelegate> delegate) override;

    void setAutomatic(bool automatic) { isAutomatic_ = automatic; }
    /// Runs all delegate queues, on the calling thread, until nothing waits on any.
    void runDelegateQueues();
    /// True while something runs on a delegate queue on the calling thread.
    bool isOnDelegateQueue() const;

    const std::vector<std::shared_ptr<SimulatedWebSocketSession>>& sessions() const {
        return sessions_;
    }
    /// The connections of all sessions, from first to last.
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks() const;
    /// The connection that was made last; there must be one.
    SimulatedWebSocketTask& lastTask() const;

    /// Lets every delegate go; what waits on the delegate queues still runs.
    void letDelegatesGo();
    /// Lets every delegate go, and everything that waits; the sessions are of no use from then on.
    void abandon();

  private:
    bool runOne();

    SimulatedTime& time_;
    Journal& journal_;
    bool isAutomatic_ = true;
    std::vector<std::shared_ptr<SimulatedWebSocketSession>> sessions_;
};

}  // namespace tarvik::simulated
