#pragma once

#include <memory>

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/macos/system/BlockQueue.h"

namespace tarvik::macdesktop {

/// The main queue on Dispatch and the main run loop; it also runs in the loop of a modal alert or
/// of a menu. Made and destroyed on the main thread.
class DispatchMainQueue final : public platform::MainQueue {
  public:
    /// `clock` outlives the queue.
    explicit DispatchMainQueue(const platform::Clock& clock);
    ~DispatchMainQueue() override;

    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Destroys the blocks that wait, without running them. Main thread.
    void discardBlocks();

  private:
    const platform::Clock& clock_;
    /// Dispatch holds it as well, until the last moment that was asked for.
    std::shared_ptr<BlockQueue> blocks_;
};

}  // namespace tarvik::macdesktop
