// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/BeastWebSocketSession.h"

#include <utility>

#include "platform/linux/websocket/BeastWebSocketTask.h"

namespace tarvik::linuxdesktop {

BeastWebSocketSession::BeastWebSocketSession(
    std::shared_ptr<ThreadRegistry> threads, std::shared_ptr<SessionContext> context,
    const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate)
    : thread_(std::make_shared<SerialThread>(std::move(threads))),
      context_(std::move(context)),
      delegate_(delegate) {}

std::shared_ptr<platform::WebSocketTask> BeastWebSocketSession::webSocketTask(
    const platform::UrlRequest& request) {
    auto task = std::make_shared<BeastWebSocketTask>(shared_from_this(), request);
    const std::lock_guard lock(mutex_);
    ++connectionCount_;
    // After the end of the service nothing would release the delegate.
    heldDelegate_ = isClosed_ ? nullptr : delegate_.lock();
    std::erase_if(tasks_, [](const auto& old) { return old.expired(); });
    tasks_.push_back(task);
    return task;
}

std::shared_ptr<platform::WebSocketSessionDelegate> BeastWebSocketSession::delegate() const {
    return delegate_.lock();
}

void BeastWebSocketSession::connectionOpened(const std::shared_ptr<Connection>& connection) {
    std::erase_if(connections_, [](const auto& old) { return old.expired(); });
    connections_.push_back(connection);
}

void BeastWebSocketSession::connectionEnded() {
    {
        const std::lock_guard lock(mutex_);
        --connectionCount_;
    }
    if (!holdTimer_) {
        holdTimer_.emplace(thread_->context());
    }
    // Setting the expiry cancels an earlier wait.
    holdTimer_->expires_after(context_->options.delegateHoldTime);
    // A strong reference: the hold must last although nobody else has the session any more.
    holdTimer_->async_wait([self = shared_from_this()](const boost::system::error_code& error) {
        if (!error) {
            self->onHoldTimeOver();
        }
    });
}

void BeastWebSocketSession::onHoldTimeOver() {
    {
        const std::lock_guard lock(mutex_);
        if (connectionCount_ > 0) {
            return;
        }
    }
    releaseDelegate();
}

void BeastWebSocketSession::releaseDelegate() {
    // The delegate is destroyed after the unlocking: its destructor may release this session.
    std::shared_ptr<platform::WebSocketSessionDelegate> held;
    const std::lock_guard lock(mutex_);
    held.swap(heldDelegate_);
}

void BeastWebSocketSession::close() {
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }
    thread_->close([self = shared_from_this()] { self->closeOnThread(); });
}

void BeastWebSocketSession::closeOnThread() {
    if (holdTimer_) {
        holdTimer_->cancel();
    }
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
    for (const auto& weakConnection : connections_) {
        if (const auto connection = weakConnection.lock()) {
            connection->abort();
        }
    }
}

}  // namespace tarvik::linuxdesktop
