#include "platform/linux/websocket/SerialThread.h"

#include <boost/asio/post.hpp>
#include <utility>

namespace tarvik::linuxdesktop {

SerialThread::SerialThread(std::shared_ptr<SessionThreads> threads)
    : threads_(std::move(threads)) {}

void SerialThread::post(std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    if (isClosed_) {
        return;
    }
    ++posted_;
    boost::asio::post(context_, std::move(block));
    if (!isRunning_) {
        isRunning_ = true;
        threads_->start([self = shared_from_this()] { self->run(); });
    }
}

void SerialThread::close(std::function<void()> last) {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    if (isRunning_) {
        ++posted_;
        boost::asio::post(context_, std::move(last));
    }
}

void SerialThread::run() {
    std::unique_lock lock(mutex_);
    std::uint64_t seen = 0;
    // A block that was posted when the context had just run dry starts it again.
    do {
        seen = posted_;
        lock.unlock();
        context_.restart();
        context_.run();
        lock.lock();
    } while (posted_ != seen);
    isRunning_ = false;
}

}  // namespace tarvik::linuxdesktop
