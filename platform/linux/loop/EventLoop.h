// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tarvik::linuxdesktop {

/// A time point of the clock that deadlines are measured with.
using SteadyTime = std::chrono::steady_clock::time_point;

class Deadline;

/// The loop of one thread: it watches descriptors and keeps deadlines.
///
/// The thread sleeps while nothing of that is due. Operations are for the loop's thread, and none
/// blocks.
class EventLoop {
  public:
    /// A watched descriptor. Dropping the handle ends the watch, also inside `onReady`.
    class Watch {
      public:
        virtual ~Watch() = default;
        /// Sets the awaited events of poll(2): POLLIN, POLLOUT, both or neither.
        virtual void setEvents(short events) = 0;
    };

    virtual ~EventLoop() = default;

    /// Calls `onReady` in each turn in which one of `events` (as in Watch::setEvents) has occurred
    /// on `descriptor`. The descriptor outlives the handle, and the handle does not outlive the
    /// loop.
    [[nodiscard]] virtual std::unique_ptr<Watch> watch(int descriptor, short events,
                                                       std::function<void()> onReady) = 0;

    /// The time by which deadlines pass.
    virtual SteadyTime now() const { return std::chrono::steady_clock::now(); }

  protected:
    /// The earliest deadline; empty when there is none.
    std::optional<SteadyTime> nextDeadline() const;
    /// Calls the actions of the deadlines that have passed.
    void runDeadlines();

  private:
    friend class Deadline;

    virtual void onDeadlinesChanged() = 0;

    std::vector<Deadline*> deadlines_;
};

/// A time at which the loop calls an action once. Dropping the deadline cancels the call.
///
/// Loop thread only. The deadline does not outlive the loop. The action may set, clear or drop it.
class Deadline {
  public:
    explicit Deadline(EventLoop& loop) : loop_(loop) {}
    ~Deadline() { clear(); }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// Has `action` called in a later turn, at `time` or `delay` from now. Replaces an earlier
    /// setting.
    void set(SteadyTime time, std::function<void()> action);
    void set(std::chrono::milliseconds delay, std::function<void()> action);
    void clear();

  private:
    friend class EventLoop;

    EventLoop& loop_;
    SteadyTime time_;
    std::function<void()> action_;
};

}  // namespace tarvik::linuxdesktop
