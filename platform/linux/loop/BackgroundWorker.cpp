#include "platform/linux/loop/BackgroundWorker.h"

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

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
            // What the job holds goes outside the lock too: it may submit another one.
            job = nullptr;
            lock.lock();
        }
        hasEnded = true;
        changed.notify_all();
    }
};

BackgroundWorker::BackgroundWorker(const std::string& name, Seconds patience)
    : jobs_(std::make_shared<Jobs>()), patience_(patience) {
    jobs_->thread = std::thread([jobs = jobs_] { jobs->run(); });
    pthread_setname_np(jobs_->thread.native_handle(), name.c_str());
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
        jobs_->changed.wait_for(lock, patience_, [this] { return jobs_->hasEnded; });
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
