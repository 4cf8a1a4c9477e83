// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// The loop of a worker thread, over poll(2). The loop thread is the thread that calls run().
///
/// The process is aborted when there is no descriptor left for the loop: posted tasks would be
/// waited for in vain.
class PollLoop final : public EventLoop {
  public:
    PollLoop();
    ~PollLoop() override;
    PollLoop(const PollLoop&) = delete;
    PollLoop& operator=(const PollLoop&) = delete;

    [[nodiscard]] std::unique_ptr<Watch> watch(int descriptor, short events,
                                               std::function<void()> onReady) override;
    /// Runs `task` in a later turn, in the order of posting. Any thread; never blocks.
    void post(std::function<void()> task);

    /// Runs until quit(), and can be called again after it. Before each sleep the loop calls
    /// `beforeSleep`, if there is one: for a library that reads ahead, so that its descriptor does
    /// not tell of everything that has come.
    void run(const std::function<void()>& beforeSleep = {});

    /// Ends run() after the current task, action or `beforeSleep`. Loop thread.
    void quit() { quits_ = true; }

  private:
    class PollWatch;
    struct Watched;

    void onDeadlinesChanged() override {}
    void runTasks();
    void sleep();

    std::mutex mutex_;
    std::deque<std::function<void()>> tasks_;
    std::vector<std::shared_ptr<Watched>> watched_;
    FileDescriptor wakeUp_;
    bool quits_ = false;
};

}  // namespace tarvik::linuxdesktop
