// SPDX-License-Identifier: MIT

#include "platform/linux/system/MemoryArenas.h"

#include <malloc.h>

namespace tarvik::linuxdesktop {

void limitMemoryArenas() {
    constexpr int maxArenas = 2;
    // A refusal only costs memory.
    mallopt(M_ARENA_MAX, maxArenas);
}

}  // namespace tarvik::linuxdesktop
