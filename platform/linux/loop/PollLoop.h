#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace tarvik::linuxdesktop {

class Deadline;

/// The loop of the input thread: it sleeps until a descriptor can be read, a task was posted or a
/// deadline has come, and never wakes otherwise.
class PollLoop {
  public:
    PollLoop();
    ~PollLoop();
    PollLoop(const PollLoop&) = delete;
    PollLoop& operator=(const PollLoop&) = delete;

    /// Runs `task` in the loop, in the order of posting. Any thread; never blocks.
    void post(std::function<void()> task);

    /// Runs until `quit`. Before each sleep it calls `drain`, which answers the descriptor to
    /// watch, or -1.
    void run(const std::function<int()>& drain);

    /// Ends `run` after the current task or `drain`. Loop thread.
    void quit() { quits_ = true; }

  private:
    friend class Deadline;

    void runTasks();
    void runDeadlines();
    void sleep(int descriptor);

    std::mutex mutex_;
    std::deque<std::function<void()>> tasks_;
    std::vector<Deadline*> deadlines_;
    int wakeUp_;
    bool quits_ = false;
};

/// One moment at which the loop calls something. Loop thread; dropping it forgets the call.
class Deadline {
  public:
    explicit Deadline(PollLoop& loop) : loop_(loop) {}
    ~Deadline() { clear(); }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// Calls `action` once, `delay` from now; replaces what was set before.
    void set(std::chrono::milliseconds delay, std::function<void()> action);
    void clear();

  private:
    friend class PollLoop;

    PollLoop& loop_;
    std::chrono::steady_clock::time_point moment_;
    std::function<void()> action_;
};

}  // namespace tarvik::linuxdesktop
