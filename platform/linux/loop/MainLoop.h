// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/Clock.h"
#include "platform/linux/loop/Alarm.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The main thread's loop, which Qt runs, as an event loop. Several of these may exist, and each
/// carries what its owner adds. Callbacks also come in the nested loop of a modal alert or a menu.
///
/// Made and destroyed on the main thread, which has its QCoreApplication by then.
class MainLoop final : public EventLoop {
  public:
    /// `clock` is a MonotonicClock, or moves as one, and outlives the loop.
    explicit MainLoop(const platform::Clock& clock);
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    [[nodiscard]] std::unique_ptr<Watch> watch(int descriptor, short events,
                                               std::function<void()> onReady) override;

  private:
    void onDeadlinesChanged() override;

    const platform::Clock& clock_;
    Alarm alarm_;
};

}  // namespace tarvik::linuxdesktop
