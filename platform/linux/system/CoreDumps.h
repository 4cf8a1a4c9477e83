// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

/// Makes the system write no memory of this process to disk when it crashes: the memory holds the
/// user's key and words. To be called first on the main thread. A failure leaves the limit as it
/// is. Programs that this process starts inherit the limit and may raise it again.
void preventCoreDumps();

}  // namespace tarvik::linuxdesktop
