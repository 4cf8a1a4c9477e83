// SPDX-License-Identifier: MIT

#include "platform/linux/loop/BackgroundWorker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

struct BackgroundWorker::Jobs {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    bool isEnding = false;
    bool hasEnded = false;
    /// Whether runWaiting() is under way.
    bool isRunning = false;
    std::thread thread;

    void run() {
        std::unique_lock lock(mutex);
        while (!isEnding || !waiting.empty()) {
            runWaiting(lock);
            changed.wait(lock, [this] { return isEnding || !waiting.empty(); });
        }
        hasEnded = true;
        changed.notify_all();
    }

    void runWaiting(std::unique_lock<std::mutex>& lock) {
        if (std::exchange(isRunning, true)) {
            return;
        }
        while (!waiting.empty()) {
            std::function<void()> job = std::move(waiting.front());
            waiting.pop_front();
            lock.unlock();
            job();
            // Outside the lock too: what the job holds may submit another job when it is destroyed.
            job = nullptr;
            lock.lock();
        }
        isRunning = false;
    }
};

BackgroundWorker::BackgroundWorker(const std::string& name, Seconds timeout)
    : jobs_(std::make_shared<Jobs>()), timeout_(timeout) {
    try {
        jobs_->thread = startThread(name, [jobs = jobs_] { jobs->run(); });
    } catch (const std::system_error& failure) {
        error_ = Error{failure.code().value(), failure.code().message()};
    }
}

BackgroundWorker::~BackgroundWorker() {
    finish();
}

void BackgroundWorker::finish() {
    std::unique_lock lock(jobs_->mutex);
    jobs_->isEnding = true;
    jobs_->changed.notify_all();
    if (!jobs_->thread.joinable()) {
        return;
    }
    const bool hasEnded =
        jobs_->changed.wait_for(lock, timeout_, [this] { return jobs_->hasEnded; });
    lock.unlock();
    if (hasEnded) {
        jobs_->thread.join();
    } else {
        jobs_->thread.detach();
    }
}

void BackgroundWorker::async(std::function<void()> job) {
    // An own reference: without a thread, a job may be the one that destroys the worker's owner.
    const std::shared_ptr<Jobs> jobs = jobs_;
    std::unique_lock lock(jobs->mutex);
    if (jobs->isEnding) {
        return;
    }
    jobs->waiting.push_back(std::move(job));
    if (error_) {
        jobs->runWaiting(lock);
    } else {
        jobs->changed.notify_all();
    }
}

}  // namespace tarvik::linuxdesktop
