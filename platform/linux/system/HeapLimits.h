// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

/// Makes all threads of the process allocate from two arenas at most. To be called before the first
/// thread starts.
///
/// Every recording has a thread of its own. The allocator would give these threads up to eight
/// arenas a processor, each of which keeps what its busiest recording needed.
void limitMemoryArenas();

}  // namespace tarvik::linuxdesktop
