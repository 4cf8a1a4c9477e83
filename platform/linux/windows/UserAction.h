#pragma once

#include <cstdint>
#include <string>

namespace tarvik::linuxdesktop {

/// What the user did to ask for what is carried out while the object lives. The windows that come
/// to the front meanwhile ask for the keyboard in its name; at the end the desktop hears that it
/// has been done. Actions may be nested, the newest one counts. Main thread only.
class UserAction {
  public:
    /// `startupId` names the action to the display server: a startup id or a Wayland activation
    /// token. It may be empty.
    explicit UserAction(std::string startupId);
    ~UserAction();
    UserAction(const UserAction&) = delete;
    UserAction& operator=(const UserAction&) = delete;

    /// When the user did what is being carried out now, as the X server counts time; 0 when that is
    /// unknown or nothing is.
    static std::uint32_t presentTime();

  private:
    std::string startupId_;
    std::uint32_t timeBefore_;
};

}  // namespace tarvik::linuxdesktop
