// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace tarvik::linuxdesktop {

/// Something that the user has asked of the application: a menu entry, a second start, a hotkey.
/// The object lives while the application carries it out. Main thread only.
///
/// Windows that come to the front meanwhile ask for the keyboard. All other windows leave the
/// keyboard to the program in which the user may be typing. Actions may be nested; the newest one
/// counts.
class UserAction {
  public:
    /// `time` is the X server's time of the action; 0 when the time is unknown.
    explicit UserAction(std::uint32_t time = 0);
    ~UserAction();
    UserAction(const UserAction&) = delete;
    UserAction& operator=(const UserAction&) = delete;

    /// The time of the action that is being carried out; empty when there is none.
    static std::optional<std::uint32_t> currentTime();

  private:
    std::optional<std::uint32_t> outerTime_;
};

}  // namespace tarvik::linuxdesktop
