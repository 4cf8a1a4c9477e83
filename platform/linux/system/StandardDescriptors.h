// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

/// Opens /dev/null for each of the standard streams that is closed.
///
/// A file or socket that got the number 2 would receive the log. To be called first on the
/// main thread, before anything else opens a descriptor. A failure leaves the streams as they are.
void openStandardDescriptors();

}  // namespace tarvik::linuxdesktop
