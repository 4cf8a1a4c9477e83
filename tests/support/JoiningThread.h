// SPDX-License-Identifier: MIT
#pragma once

#include <thread>
#include <utility>

namespace tarvik::simulated {

/// A thread that the destructor joins. It replaces std::jthread, which not every supported standard
/// library has.
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
