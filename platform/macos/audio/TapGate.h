// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>

#include "platform/AudioEngine.h"

namespace tarvik::macdesktop {

/// Passes the buffers of the engine's tap on to a block until the gate is closed. A buffer that the
/// engine still has under way when the tap is removed is dropped. Allocates nothing.
class TapGate {
  public:
    explicit TapGate(platform::AudioTapBlock block);

    /// Passes the buffer on while the gate is open. On the engine's delivery thread.
    void deliver(const platform::AudioPcmBuffer& buffer);
    /// Closes the gate and destroys the block. Waits for a delivery under way, which takes one
    /// conversion. Main thread; harmless when repeated.
    void close();

  private:
    std::mutex mutex_;
    platform::AudioTapBlock block_;
};

}  // namespace tarvik::macdesktop
