// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/SerialThread.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/system/system_error.hpp>
#include <utility>

namespace tarvik::linuxdesktop {

SerialThread::SerialThread(std::shared_ptr<ThreadRegistry> threads)
    : threads_(std::move(threads)) {}

void SerialThread::post(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    if (isClosed_) {
        return;
    }
    waiting_.push_back(std::move(block));
    isRunning_ = isRunning_ ||
                 (hasContext() && threads_->start([self = shared_from_this()] { self->run(); }));
    if (!isRunning_) {
        return;
    }
    for (auto& next : std::exchange(waiting_, {})) {
        ++postCount_;
        boost::asio::post(*context_, std::move(next));
    }
}

bool SerialThread::hasContext() {
    if (context_) {
        return true;
    }
    try {
        auto context = std::make_unique<boost::asio::io_context>(1);
        // The first timer or socket opens the descriptors of the context.
        const boost::asio::steady_timer timer(*context);
        context_ = std::move(context);
        return true;
    } catch (const boost::system::system_error& error) {
        threads_->reportShortage(error.code());
        return false;
    }
}

void SerialThread::close(std::function<void()> last) {
    // Destroyed after the unlocking: a block may hold the last reference to this object's owner.
    std::deque<std::function<void()>> dropped;
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    dropped.swap(waiting_);
    if (isRunning_) {
        ++postCount_;
        boost::asio::post(*context_, std::move(last));
    }
}

void SerialThread::run() {
    std::unique_lock lock(mutex_);
    std::uint64_t seenCount = 0;
    // The context returns when it runs out of work. A block posted just then needs another run.
    do {
        seenCount = postCount_;
        lock.unlock();
        context_->restart();
        context_->run();
        lock.lock();
    } while (postCount_ != seenCount);
    isRunning_ = false;
}

}  // namespace tarvik::linuxdesktop
