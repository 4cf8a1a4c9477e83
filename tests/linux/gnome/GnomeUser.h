// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "platform/linux/bus/BusHandles.h"

namespace tarvik::tests {

/// The person at the keyboard of a GNOME session.
class GnomeUser {
  public:
    // As the kernel numbers keys.
    static constexpr std::uint32_t escapeKey = 1;
    static constexpr std::uint32_t backspaceKey = 14;
    static constexpr std::uint32_t controlKey = 29;
    static constexpr std::uint32_t aKey = 30;
    static constexpr std::uint32_t shiftKey = 42;
    static constexpr std::uint32_t altKey = 56;
    static constexpr std::uint32_t spaceKey = 57;

    /// Plugs in a keyboard.
    GnomeUser();
    /// Lets go of every key.
    ~GnomeUser();
    GnomeUser(const GnomeUser&) = delete;
    GnomeUser& operator=(const GnomeUser&) = delete;

    void press(std::uint32_t key);
    void release(std::uint32_t key);
    void tap(std::uint32_t key);

    /// The value of a setting of GNOME, in GNOME's notation; and sets one.
    static std::string setting(const std::string& schema, const std::string& key);
    static void set(const std::string& schema, const std::string& key, const std::string& value);
    /// The engine of IBus that is in use.
    static std::string engine();

  private:
    void send(std::uint32_t key, bool isDown);

    linuxdesktop::BusHandle bus_;
    std::string session_;
    std::set<std::uint32_t> down_;
};

}  // namespace tarvik::tests
