// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

/// Keeps the heap from growing with what is needed for a short time. To be called before the first
/// thread starts.
///
/// Every recording has a thread of its own. The allocator would give these threads up to eight
/// arenas a processor, each of which keeps what its busiest recording needed. Two arenas serve all
/// threads.
///
/// The pixels of a window are megabytes. After the first such block the allocator would take
/// later ones from the heap, and keep up to twice their size there. Large blocks always have pages
/// of their own, which the system gets back with each block.
void limitHeap();

}  // namespace tarvik::linuxdesktop
