// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Alert.h"

namespace tarvik::macdesktop {

/// Shows `alert` as an NSAlert and returns the answer when the NSAlert is closed. The loop of the
/// NSAlert also runs the main queue and the hotkeys. While another alert is open, this one counts
/// as closed at once. Main thread.
platform::AlertAnswer runAlert(const platform::Alert& alert);

}  // namespace tarvik::macdesktop
