// SPDX-License-Identifier: MIT

#include "platform/linux/loop/Reconnection.h"

#include <poll.h>
#include <sys/inotify.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds minInterval = 100ms;
constexpr std::chrono::milliseconds maxInterval = 30s;
// A socket is in its folder before somebody listens on it.
constexpr int maxTries = 6;
// A server that ends a connection earlier than that may always do so.
constexpr auto stableTime = 10s;

}  // namespace

Reconnection::Reconnection(EventLoop& loop, std::filesystem::path socket,
                           std::function<bool()> connect)
    : socket_(std::move(socket)), connect_(std::move(connect)), loop_(loop), deadline_(loop) {}

void Reconnection::begin() {
    const bool wasStable = std::chrono::steady_clock::now() > connectionTime_ + stableTime;
    triesLeft_ = maxTries;
    watchFolder();
    tryAfter(wasStable ? minInterval : 2 * interval_);
}

void Reconnection::end() {
    deadline_.clear();
    watch_.reset();
    inotify_ = FileDescriptor();
}

void Reconnection::watchFolder() {
    if (watch_) {
        return;
    }
    // Where the system refuses the watch, the tries after the loss are all there is.
    inotify_ = FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (inotify_ && inotify_add_watch(inotify_.number(), socket_.parent_path().c_str(),
                                      IN_CREATE | IN_MOVED_TO | IN_ONLYDIR) >= 0) {
        watch_ = loop_.watch(inotify_.number(), POLLIN, [this] { readEvents(); });
    }
}

void Reconnection::readEvents() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool hasAppeared = false;
    for (ssize_t length = 0;
         (length = read(inotify_.number(), buffer.data(), buffer.size())) > 0;) {
        for (std::size_t offset = 0; offset < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            const char* name = buffer.data() + offset + sizeof event;
            hasAppeared = hasAppeared || (event.len > 0 && name == socket_.filename());
            offset += sizeof event + event.len;
        }
    }
    if (hasAppeared) {
        triesLeft_ = maxTries;
        tryAfter(minInterval);
    }
}

void Reconnection::tryAfter(std::chrono::milliseconds interval) {
    interval_ = std::clamp(interval, minInterval, maxInterval);
    deadline_.set(interval_, [this] { tryOnce(); });
}

void Reconnection::tryOnce() {
    if (connect_()) {
        connectionTime_ = std::chrono::steady_clock::now();
        end();
    } else if (--triesLeft_ > 0) {
        tryAfter(2 * interval_);
    }
}

}  // namespace tarvik::linuxdesktop
