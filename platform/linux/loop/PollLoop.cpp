#include "platform/linux/loop/PollLoop.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

int makeWakeUp() {
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) {
        // Nobody could ask the loop for anything, and whoever waited for it would wait in vain.
        std::abort();
    }
    return descriptor;
}

}  // namespace

PollLoop::PollLoop() : wakeUp_(makeWakeUp()) {}

PollLoop::~PollLoop() {
    close(wakeUp_);
}

void PollLoop::post(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    const std::uint64_t one = 1;
    // A full counter, the only way to fail, wakes the loop as well.
    [[maybe_unused]] const auto written = write(wakeUp_, &one, sizeof one);
}

void PollLoop::run(const std::function<int()>& drain) {
    while (!quits_) {
        runTasks();
        runDeadlines();
        if (quits_) {
            return;
        }
        const int descriptor = drain();
        if (!quits_) {
            sleep(descriptor);
        }
    }
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

void PollLoop::runDeadlines() {
    const auto now = std::chrono::steady_clock::now();
    const auto isDue = [&](const Deadline* deadline) { return deadline->moment_ <= now; };
    for (auto due = std::ranges::find_if(deadlines_, isDue); due != deadlines_.end();
         due = std::ranges::find_if(deadlines_, isDue)) {
        Deadline& deadline = **due;
        deadlines_.erase(due);
        std::exchange(deadline.action_, nullptr)();
    }
}

void PollLoop::sleep(int descriptor) {
    int timeout = -1;
    if (!deadlines_.empty()) {
        const auto next = std::ranges::min(deadlines_, {}, &Deadline::moment_)->moment_;
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(next - std::chrono::steady_clock::now());
        timeout = static_cast<int>(std::max<std::int64_t>(wait.count(), 0));
    }
    std::array<pollfd, 2> watched{{{wakeUp_, POLLIN, 0}, {descriptor, POLLIN, 0}}};
    poll(watched.data(), watched.size(), timeout);
    std::uint64_t count = 0;
    // Nothing to read means that something else has woken the loop.
    [[maybe_unused]] const auto taken = read(wakeUp_, &count, sizeof count);
}

void Deadline::set(std::chrono::milliseconds delay, std::function<void()> action) {
    clear();
    moment_ = std::chrono::steady_clock::now() + delay;
    action_ = std::move(action);
    loop_.deadlines_.push_back(this);
}

void Deadline::clear() {
    std::erase(loop_.deadlines_, this);
    action_ = nullptr;
}

}  // namespace tarvik::linuxdesktop
