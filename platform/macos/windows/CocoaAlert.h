#pragma once

#include "platform/Alert.h"

namespace tarvik::macdesktop {

/// Shows the alert as an NSAlert and comes back with the answer. Main thread; its loop also runs
/// the main queue and the hotkeys.
platform::AlertAnswer runAlert(const platform::Alert& alert);

}  // namespace tarvik::macdesktop
