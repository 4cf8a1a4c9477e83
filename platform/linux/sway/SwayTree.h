// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// The windows of a Sway session and what has the keyboard, from Sway's JSON. Immutable.
class SwayTree {
  public:
    /// Nothing at all.
    SwayTree() = default;
    /// Reads the reply to GET_TREE. What cannot be read counts as not there.
    explicit SwayTree(std::string_view json);

    const std::vector<WindowFocus::Window>& windows() const { return windows_; }
    /// The window that has the keyboard; number 0 when none has it. A launcher, a panel or a screen
    /// locker is no window.
    const WindowFocus::Window& focused() const { return focused_; }
    /// The command that gives the keyboard back to what has it; empty when Sway knows no such
    /// command.
    const std::string& focusCommand() const { return focusCommand_; }

  private:
    template <typename Node>
    void add(const Node& node, int depth);

    std::vector<WindowFocus::Window> windows_;
    WindowFocus::Window focused_;
    std::string focusCommand_;
};

/// The command that gives the keyboard to a window.
std::string focusCommandFor(std::int64_t window);

}  // namespace tarvik::linuxdesktop
