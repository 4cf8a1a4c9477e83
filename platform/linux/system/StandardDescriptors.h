// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

/// Opens /dev/null for each of the standard streams that is closed.
///
/// A file or socket that got the number 2 would receive the log. To be called first, before
/// anything else opens a descriptor.
void openStandardDescriptors();

}  // namespace tarvik::linuxdesktop
