// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// Decides when to connect again to a local server that has ended a connection. Loop thread only.
///
/// A few tries follow a loss, at doubled intervals. Afterwards nothing wakes the thread until the
/// server's socket is made again.
class Reconnection {
  public:
    /// `connect` connects, and returns whether the server listens. It is called in turns of `loop`,
    /// which outlives the object, and does not destroy the object.
    Reconnection(EventLoop& loop, std::filesystem::path socket, std::function<bool()> connect);
    Reconnection(const Reconnection&) = delete;
    Reconnection& operator=(const Reconnection&) = delete;

    /// The connection is lost. A connection that was lost soon after it was made has a longer
    /// interval before the next try.
    void begin();
    /// Tries no more.
    void end();

  private:
    void watchFolder();
    void readEvents();
    void tryAfter(std::chrono::milliseconds interval);
    void tryOnce();

    const std::filesystem::path socket_;
    const std::function<bool()> connect_;
    EventLoop& loop_;
    Deadline deadline_;
    std::chrono::milliseconds interval_{0};
    int triesLeft_ = 0;
    SteadyTime connectionTime_;
    FileDescriptor inotify_;
    std::unique_ptr<EventLoop::Watch> watch_;
};

}  // namespace tarvik::linuxdesktop
