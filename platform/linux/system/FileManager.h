// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/MainLoop.h"

namespace tarvik::linuxdesktop {

/// The desktop's file manager, by its name on the session bus. Main thread only; nothing blocks.
class FileManager {
  public:
    /// `clock` outlives the object.
    explicit FileManager(const platform::Clock& clock) : loop_(clock) {}

    /// Has the file at `path` (absolute) shown in its folder, selected; starts the file manager
    /// where that is needed. `onFailure` is called when no file manager has done so within 10 s.
    void show(const std::string& path, std::function<void()> onFailure);

  private:
    MainLoop loop_;
    /// Opened by show(); empty again when the bus is lost.
    std::unique_ptr<MessageBus> sessionBus_;
};

}  // namespace tarvik::linuxdesktop
