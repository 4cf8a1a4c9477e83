// SPDX-License-Identifier: MIT

#include "platform/linux/system/HeapLimits.h"

#include <malloc.h>

namespace tarvik::linuxdesktop {

void limitHeap() {
    constexpr int maxArenas = 2;
    // The allocator's own first value. A value that is set stays as it is.
    constexpr int minLargeBlock = 128 * 1024;
    // A refusal only costs memory.
    mallopt(M_ARENA_MAX, maxArenas);
    mallopt(M_MMAP_THRESHOLD, minLargeBlock);
}

}  // namespace tarvik::linuxdesktop
