#pragma once

#include <mutex>

#include "platform/AudioEngine.h"

namespace tarvik::macdesktop {

/// Stands between the engine's tap and the block that receives it, so that nothing passes any more
/// once the tap has been removed, whatever the engine still has under way. Allocates nothing.
class TapGate {
  public:
    explicit TapGate(platform::AudioTapBlock block);

    /// Passes the buffer on while the gate is open. The engine's delivery thread.
    void deliver(const platform::AudioPcmBuffer& buffer);
    /// Main thread. Waits for a delivery under way, which is one conversion long.
    void close();

  private:
    std::mutex mutex_;
    platform::AudioTapBlock block_;
};

}  // namespace tarvik::macdesktop
