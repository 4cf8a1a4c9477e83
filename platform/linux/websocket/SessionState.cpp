#include "platform/linux/websocket/SessionState.h"

#include <utility>

#include "platform/linux/websocket/BeastWebSocketTask.h"

namespace tarvik::linuxdesktop {

SessionState::SessionState(std::shared_ptr<SessionThreads> threads,
                           std::shared_ptr<const SessionSurroundings> surroundings,
                           const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate)
    : thread_(std::make_shared<SerialThread>(std::move(threads))),
      surroundings_(std::move(surroundings)),
      delegate_(delegate),
      linger_(thread_->context()) {}

std::shared_ptr<platform::WebSocketSessionDelegate> SessionState::delegate() const {
    return delegate_.lock();
}

void SessionState::connectionMade(const std::shared_ptr<BeastWebSocketTask>& task) {
    const std::lock_guard lock(mutex_);
    ++connectionCount_;
    heldDelegate_ = delegate_.lock();
    std::erase_if(tasks_, [](const auto& old) { return old.expired(); });
    tasks_.push_back(task);
}

void SessionState::connectionOpened(const std::shared_ptr<Connection>& connection) {
    std::erase_if(openConnections_, [](const auto& old) { return old.expired(); });
    openConnections_.push_back(connection);
}

void SessionState::connectionEnded() {
    {
        const std::lock_guard lock(mutex_);
        --connectionCount_;
    }
    // An earlier wait is cancelled by this one.
    linger_.expires_after(surroundings_->timing.delegateLinger);
    linger_.async_wait([self = shared_from_this()](const boost::system::error_code& failure) {
        if (!failure) {
            self->onLingered();
        }
    });
}

void SessionState::onLingered() {
    {
        const std::lock_guard lock(mutex_);
        if (connectionCount_ > 0) {
            return;
        }
    }
    releaseDelegate();
}

void SessionState::releaseDelegate() {
    // The delegate may own the session, so it goes without the lock.
    std::shared_ptr<platform::WebSocketSessionDelegate> held;
    const std::lock_guard lock(mutex_);
    held.swap(heldDelegate_);
}

void SessionState::close() {
    thread_->close([self = shared_from_this()] { self->closeOnThread(); });
}

void SessionState::closeOnThread() {
    linger_.cancel();
    std::vector<std::weak_ptr<BeastWebSocketTask>> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const auto& weakTask : tasks) {
        if (const auto task = weakTask.lock()) {
            task->drop();
        }
    }
    for (const auto& weakConnection : openConnections_) {
        if (const auto connection = weakConnection.lock()) {
            connection->cut();
        }
    }
}

}  // namespace tarvik::linuxdesktop
