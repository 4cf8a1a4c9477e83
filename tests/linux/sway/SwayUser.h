// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ios>
#include <optional>
#include <string>

#include "platform/linux/wayland/VirtualKeyboardProtocol.h"
#include "tests/linux/input/KeyboardUser.h"

namespace tarvik::tests {

/// The person at the keyboard of a Sway session, and what the person does to Sway.
class SwayUser final : public KeyboardUser {
  public:
    /// Plugs in a keyboard with an American layout.
    SwayUser();
    /// Lets go of every key and gives Sway its first configuration back.
    ~SwayUser() override;

    /// Runs a command of Sway; returns Sway's answer.
    std::string run(const std::string& command);
    /// Adds a line to Sway's configuration and has Sway read it again.
    void configure(const std::string& line);
    /// Takes back what configure() has added, as the destructor does.
    void restoreConfiguration();

  private:
    void configure(const std::string& text, std::ios::openmode mode);
    void send(std::uint32_t key, bool isPressed) override;

    wl_display* display_;
    wl_seat* seat_ = nullptr;
    zwp_virtual_keyboard_manager_v1* manager_ = nullptr;
    zwp_virtual_keyboard_v1* keyboard_ = nullptr;
    std::uint32_t time_ = 0;
    // What the configuration was, once it is another.
    std::optional<std::string> configuration_;
};

}  // namespace tarvik::tests
