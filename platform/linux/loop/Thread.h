// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace tarvik::linuxdesktop {

/// Starts a thread that runs `body` and receives no signals: signals are for the main thread.
/// `name` is what a process list shows (15 bytes at most). Throws std::system_error when the system
/// has no thread left.
[[nodiscard]] std::thread startThread(const std::string& name, std::function<void()> body);

}  // namespace tarvik::linuxdesktop
