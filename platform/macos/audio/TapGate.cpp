// SPDX-License-Identifier: MIT

#include "platform/macos/audio/TapGate.h"

#include <utility>

namespace tarvik::macdesktop {

TapGate::TapGate(platform::AudioTapBlock block) : block_(std::move(block)) {}

void TapGate::deliver(const platform::AudioPcmBuffer& buffer) {
    const std::lock_guard lock(mutex_);
    if (block_) {
        block_(buffer);
    }
}

void TapGate::close() {
    // Destroyed after the lock is released, and on this thread instead of the delivery thread.
    platform::AudioTapBlock closed;
    const std::lock_guard lock(mutex_);
    closed.swap(block_);
}

}  // namespace tarvik::macdesktop
