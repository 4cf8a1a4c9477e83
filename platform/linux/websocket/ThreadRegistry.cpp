// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/ThreadRegistry.h"

#include <string>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

bool ThreadRegistry::start(std::function<void()> body) {
    const std::lock_guard lock(mutex_);
    if (isClosed_) {
        return false;
    }
    std::erase_if(entries_, [](Entry& entry) {
        if (!entry.hasEnded->load()) {
            return false;
        }
        entry.thread.join();
        return true;
    });
    auto hasEnded = std::make_shared<std::atomic<bool>>(false);
    try {
        std::thread thread =
            startThread("web-socket", [body = std::move(body), hasEnded]() mutable {
                body();
                // The captures of the body are destroyed on its own thread and before the end is
                // visible.
                body = nullptr;
                hasEnded->store(true);
            });
        entries_.push_back({std::move(thread), std::move(hasEnded)});
    } catch (const std::system_error& error) {
        logShortage(error.code());
        return false;
    }
    isShortageLogged_ = false;
    return true;
}

void ThreadRegistry::reportShortage(const std::error_code& error) {
    const std::lock_guard lock(mutex_);
    logShortage(error);
}

void ThreadRegistry::logShortage(const std::error_code& error) {
    if (!std::exchange(isShortageLogged_, true)) {
        log_.write("TarvikDictate: no thread for the connection to the service: " +
                   error.message());
    }
}

void ThreadRegistry::joinAll() {
    std::list<Entry> entries;
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        entries.swap(entries_);
    }
    for (Entry& entry : entries) {
        entry.thread.join();
    }
}

}  // namespace tarvik::linuxdesktop
