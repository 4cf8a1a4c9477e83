// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace tarvik {

/// Links to the panes of the system settings in which the user grants the permissions. The
/// workspace opens each link in the way of its desktop.
class SettingsURLs {
  public:
    SettingsURLs() = delete;

    static constexpr std::string_view microphone =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone";
    static constexpr std::string_view accessibility =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
};

}  // namespace tarvik
