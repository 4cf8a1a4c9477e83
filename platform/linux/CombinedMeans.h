// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/TypingMeans.h"

namespace tarvik::linuxdesktop {

/// Several means of one service as one, while the session has not told which of them serves. The
/// others refuse once they are answered, and do nothing then. Of two that serve the first one
/// counts. Threads and waits are those of the means.

/// Each hotkey is registered by all means.
std::shared_ptr<HotKeyMeans> combined(std::vector<std::shared_ptr<HotKeyMeans>> means);
/// Text is typed by the first means that is available.
std::shared_ptr<TypingMeans> combined(std::vector<std::shared_ptr<TypingMeans>> means);
/// The first means that knows the window in front tells its process.
std::shared_ptr<FrontMeans> combined(std::vector<std::shared_ptr<FrontMeans>> means);

}  // namespace tarvik::linuxdesktop
