// SPDX-License-Identifier: MIT

#include "platform/linux/loop/BackgroundWorker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
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
    std::thread thread;

    void run() {
        std::unique_lock lock(mutex);
        while (true) {
            changed.wait(lock, [this] { return isEnding || !waiting.empty(); });
            if (waiting.empty()) {
                break;
            }
            std::function<void()> job = std::move(waiting.front());
            waiting.pop_front();
            lock.unlock();
            job();
            // Outside the lock too: what the job holds may submit another job when it is destroyed.
            job = nullptr;
            lock.lock();
        }
        hasEnded = true;
        changed.notify_all();
    }
};

BackgroundWorker::BackgroundWorker(const std::string& name, Seconds timeout)
    : jobs_(std::make_shared<Jobs>()), timeout_(timeout) {
    jobs_->thread = startThread(name, [jobs = jobs_] { jobs->run(); });
}

BackgroundWorker::~BackgroundWorker() {
    finish();
}

void BackgroundWorker::finish() {
    if (!jobs_->thread.joinable()) {
        return;
    }
    std::unique_lock lock(jobs_->mutex);
    jobs_->isEnding = true;
    jobs_->changed.notify_all();
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
    const std::lock_guard lock(jobs_->mutex);
    if (jobs_->isEnding) {
        return;
    }
    jobs_->waiting.push_back(std::move(job));
    jobs_->changed.notify_all();
}

}  // namespace tarvik::linuxdesktop
