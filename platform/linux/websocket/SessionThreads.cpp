#include "platform/linux/websocket/SessionThreads.h"

#include <utility>

namespace tarvik::linuxdesktop {

void SessionThreads::start(std::function<void()> body) {
    const std::lock_guard lock(mutex_);
    if (isClosed_) {
        return;
    }
    std::erase_if(threads_, [](Running& running) {
        if (!running.hasEnded->load()) {
            return false;
        }
        running.thread.join();
        return true;
    });
    auto hasEnded = std::make_shared<std::atomic<bool>>(false);
    std::thread thread([body = std::move(body), hasEnded]() mutable {
        body();
        // What the body owns goes on its own thread, before anybody may rely on its end.
        body = nullptr;
        hasEnded->store(true);
    });
    threads_.push_back({std::move(thread), std::move(hasEnded)});
}

void SessionThreads::joinAll() {
    std::list<Running> threads;
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        threads.swap(threads_);
    }
    for (Running& running : threads) {
        running.thread.join();
    }
}

}  // namespace tarvik::linuxdesktop
