#pragma once

#include <thread>
#include <utility>

namespace tarvik::simulated {

/// A thread that is waited for when it goes. (Not every standard library that builds the core has
/// std::jthread.)
class JoiningThread {
  public:
    template <typename Work>
    explicit JoiningThread(Work work) : thread_(std::move(work)) {}
    JoiningThread(JoiningThread&&) noexcept = default;
    ~JoiningThread() {
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    void join() { thread_.join(); }

  private:
    std::thread thread_;
};

}  // namespace tarvik::simulated
