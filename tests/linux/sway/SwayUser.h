// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ios>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/wayland/VirtualKeyboardProtocol.h"

namespace tarvik::tests {

/// The person at the keyboard of a Sway session, and what the person does to Sway.
class SwayUser {
  public:
    // As the kernel numbers keys.
    static constexpr std::uint32_t escapeKey = 1;
    static constexpr std::uint32_t backspaceKey = 14;
    static constexpr std::uint32_t controlKey = 29;
    static constexpr std::uint32_t aKey = 30;
    static constexpr std::uint32_t shiftKey = 42;
    static constexpr std::uint32_t altKey = 56;
    static constexpr std::uint32_t spaceKey = 57;

    /// Plugs in a keyboard with an American layout.
    SwayUser();
    /// Lets go of every key and gives Sway its first configuration back.
    ~SwayUser();
    SwayUser(const SwayUser&) = delete;
    SwayUser& operator=(const SwayUser&) = delete;

    void press(std::uint32_t key);
    void release(std::uint32_t key);
    void tap(std::uint32_t key);

    /// Runs a command of Sway; returns Sway's answer.
    std::string run(const std::string& command);
    /// Adds a line to Sway's configuration and has Sway read it again.
    void configure(const std::string& line);

  private:
    void configure(const std::string& text, std::ios::openmode mode);
    void send(std::uint32_t key, bool isDown);

    wl_display* display_;
    wl_seat* seat_ = nullptr;
    zwp_virtual_keyboard_manager_v1* manager_ = nullptr;
    zwp_virtual_keyboard_v1* keyboard_ = nullptr;
    std::uint32_t time_ = 0;
    std::set<std::uint32_t> down_;
    // What the configuration was, once it is another.
    std::optional<std::string> configuration_;
};

}  // namespace tarvik::tests
