#pragma once

#include <string_view>

namespace tarvik {

/// Links to the panes of the system's settings in which the permissions are given; for the
/// workspace to open, which knows what each means on its desktop.
class SettingsURLs {
  public:
    SettingsURLs() = delete;

    static constexpr std::string_view microphone =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone";
    static constexpr std::string_view accessibility =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
};

}  // namespace tarvik
