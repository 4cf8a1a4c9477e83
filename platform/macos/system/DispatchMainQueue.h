// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/macos/system/BlockQueue.h"

namespace tarvik::macdesktop {

/// The main queue on Dispatch and the main run loop. Blocks also run in the loop of a modal alert
/// or of a menu. Made and destroyed on the main thread.
class DispatchMainQueue final : public platform::MainQueue {
  public:
    /// `clock` outlives the queue.
    explicit DispatchMainQueue(const platform::Clock& clock);
    ~DispatchMainQueue() override;

    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Destroys the waiting blocks without running them. Main thread.
    void discardBlocks();

  private:
    const platform::Clock& clock_;
    /// Shared with Dispatch until the last deadline has passed.
    std::shared_ptr<BlockQueue> blocks_;
};

}  // namespace tarvik::macdesktop
