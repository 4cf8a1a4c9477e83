#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "platform/MainQueue.h"

namespace tarvik::macdesktop {

/// Calls a handler on the main thread for requests from any thread: once for all that come before
/// the main thread gets to it.
class PendingCall {
  public:
    /// `mainQueue` outlives the object and the requests.
    PendingCall(platform::MainQueue& mainQueue, std::function<void()> handler);

    /// Any thread.
    static void request(const std::shared_ptr<PendingCall>& call);
    /// From now on nothing is called. Main thread; also inside the handler.
    void cancel();

  private:
    void perform();

    platform::MainQueue& mainQueue_;
    std::function<void()> handler_;
    std::atomic<bool> isPending_ = false;
};

}  // namespace tarvik::macdesktop
