// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "platform/linux/bus/BusHandles.h"
#include "tests/linux/input/KeyboardUser.h"

namespace tarvik::tests {

/// The person at the keyboard of a GNOME session.
class GnomeUser final : public KeyboardUser {
  public:
    /// Plugs in a keyboard.
    GnomeUser();
    /// Lets go of every key.
    ~GnomeUser() override;

    /// The value of a setting of GNOME, in GNOME's notation; and sets one.
    static std::string setting(const std::string& schema, const std::string& key);
    static void set(const std::string& schema, const std::string& key, const std::string& value);
    /// The engine of IBus that is in use.
    static std::string engine();

  private:
    void send(std::uint32_t key, bool isPressed) override;

    linuxdesktop::BusHandle bus_;
    std::string session_;
};

}  // namespace tarvik::tests
