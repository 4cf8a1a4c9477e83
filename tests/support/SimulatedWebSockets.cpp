// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedWebSockets.h"

#include <algorithm>
#include <utility>

#include "base/Weakly.h"

namespace tarvik::simulated {

namespace {
// How long a session holds its delegate after the end of the connection.
constexpr Seconds delegateHoldTime{10.0};
}  // namespace

SimulatedWebSocketSession::SimulatedWebSocketSession(
    SimulatedTime& time, Journal& journal,
    const std::shared_ptr<platform::WebSocketSessionDelegate>& delegate)
    : time_(time), journal_(journal), weakDelegate_(delegate) {}

std::shared_ptr<platform::WebSocketTask> SimulatedWebSocketSession::webSocketTask(
    const platform::UrlRequest& request) {
    journal_.add("webSocketTask " + request.url);
    SimulatedWebSocketTask::Context context;
    context.queue = queue_;
    context.delegate = [weakSelf = weak_from_this()] {
        const auto self = weakSelf.lock();
        return self ? self->delegate() : nullptr;
    };
    context.onEnd = weakly(*this, &SimulatedWebSocketSession::releaseDelegateLater);
    context.onCall = [&journal = journal_](std::string line) { journal.add(std::move(line)); };
    auto task = std::make_shared<SimulatedWebSocketTask>(time_, std::move(context), request);
    const std::lock_guard lock(mutex_);
    heldDelegate_ = weakDelegate_.lock();
    tasks_.push_back(task);
    return task;
}

std::vector<std::shared_ptr<SimulatedWebSocketTask>> SimulatedWebSocketSession::tasks() const {
    const std::lock_guard lock(mutex_);
    return tasks_;
}

std::shared_ptr<platform::WebSocketSessionDelegate> SimulatedWebSocketSession::delegate() const {
    return weakDelegate_.lock();
}

void SimulatedWebSocketSession::releaseDelegateLater() {
    time_.asyncAfter(delegateHoldTime, weakly(*this, &SimulatedWebSocketSession::releaseDelegate));
}

void SimulatedWebSocketSession::releaseDelegate() {
    // The delegate may own this session, so the delegate is released without the lock.
    std::shared_ptr<platform::WebSocketSessionDelegate> held;
    const std::lock_guard lock(mutex_);
    held.swap(heldDelegate_);
}

void SimulatedWebSocketSession::abandon() {
    queue_->clear();
    for (const auto& task : tasks()) {
        task->abandon();
    }
    releaseDelegate();
}

SimulatedWebSockets::SimulatedWebSockets(SimulatedTime& time, Journal& journal)
    : time_(time), journal_(journal) {
    time_.addQueue([this] { return isAutomatic_ && runOne(); });
}

SimulatedWebSockets::~SimulatedWebSockets() {
    abandon();
}

std::shared_ptr<platform::WebSocketSession> SimulatedWebSockets::makeSession(
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate) {
    journal_.add("makeSession");
    auto session = std::make_shared<SimulatedWebSocketSession>(time_, journal_, delegate);
    sessions_.push_back(session);
    return session;
}

bool SimulatedWebSockets::runOne() {
    const auto sessions = sessions_;
    return std::any_of(sessions.begin(), sessions.end(),
                       [](const auto& session) { return session->delegateQueue().runOne(); });
}

void SimulatedWebSockets::runDelegateQueues() {
    while (runOne()) {
    }
}

bool SimulatedWebSockets::isOnDelegateQueue() const {
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [](const auto& session) { return session->delegateQueue().isCurrent(); });
}

std::vector<std::shared_ptr<SimulatedWebSocketTask>> SimulatedWebSockets::tasks() const {
    std::vector<std::shared_ptr<SimulatedWebSocketTask>> all;
    for (const auto& session : sessions_) {
        const auto tasks = session->tasks();
        all.insert(all.end(), tasks.begin(), tasks.end());
    }
    return all;
}

SimulatedWebSocketTask& SimulatedWebSockets::lastTask() const {
    return *tasks().back();
}

void SimulatedWebSockets::releaseDelegates() {
    for (const auto& session : sessions_) {
        session->releaseDelegate();
    }
}

void SimulatedWebSockets::abandon() {
    for (const auto& session : sessions_) {
        session->abandon();
    }
}

}  // namespace tarvik::simulated
