// SPDX-License-Identifier: MIT

#include "platform/linux/loop/PollLoop.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

FileDescriptor makeWakeUp() {
    FileDescriptor wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wakeUp) {
        std::abort();
    }
    return wakeUp;
}

int millisecondsUntil(SteadyTime time) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(time - std::chrono::steady_clock::now());
    return static_cast<int>(
        std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
}

}  // namespace

struct PollLoop::Watched {
    int descriptor;
    short events;
    std::function<void()> onReady;
    bool isDropped = false;
};

class PollLoop::PollWatch final : public EventLoop::Watch {
  public:
    PollWatch(PollLoop& loop, std::shared_ptr<Watched> watched)
        : loop_(loop), watched_(std::move(watched)) {}
    ~PollWatch() override {
        watched_->isDropped = true;
        std::erase(loop_.watched_, watched_);
    }

    void setEvents(short events) override { watched_->events = events; }

  private:
    PollLoop& loop_;
    std::shared_ptr<Watched> watched_;
};

PollLoop::PollLoop() : wakeUp_(makeWakeUp()) {}

PollLoop::~PollLoop() = default;

std::unique_ptr<EventLoop::Watch> PollLoop::watch(int descriptor, short events,
                                                  std::function<void()> onReady) {
    watched_.push_back(std::make_shared<Watched>(Watched{descriptor, events, std::move(onReady)}));
    return std::make_unique<PollWatch>(*this, watched_.back());
}

void PollLoop::post(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    // A full counter, the only way to fail, wakes the loop as well.
    eventfd_write(wakeUp_.number(), 1);
}

void PollLoop::run(const std::function<void()>& beforeSleep) {
    while (!quits_) {
        runTasks();
        runDeadlines();
        if (beforeSleep && !quits_) {
            beforeSleep();
        }
        if (!quits_) {
            sleep();
        }
    }
    quits_ = false;
}

void PollLoop::runTasks() {
    std::deque<std::function<void()>> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const auto& task : tasks) {
        task();
    }
}

void PollLoop::sleep() {
    // An own reference to each watch: a callback may end any of them.
    const std::vector<std::shared_ptr<Watched>> watched = watched_;
    std::vector<pollfd> awaited{{wakeUp_.number(), POLLIN, 0}};
    const std::size_t firstWatched = awaited.size();
    for (const auto& entry : watched) {
        awaited.push_back({entry->descriptor, entry->events, 0});
    }
    const auto next = nextDeadline();
    const int count = poll(awaited.data(), awaited.size(), next ? millisecondsUntil(*next) : -1);
    eventfd_t posted = 0;
    // Nothing to read means that something else has woken the loop.
    eventfd_read(wakeUp_.number(), &posted);
    // Without a count the events are not set.
    for (std::size_t index = 0; count > 0 && !quits_ && index < watched.size(); ++index) {
        if (awaited[firstWatched + index].revents != 0 && !watched[index]->isDropped) {
            watched[index]->onReady();
        }
    }
}

}  // namespace tarvik::linuxdesktop
