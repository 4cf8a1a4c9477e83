// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"

namespace tarvik::linuxdesktop {

/// The application as a single executable; its information dictionary holds the version.
class LinuxBundle final : public platform::Bundle {
  public:
    LinuxBundle();

    std::optional<std::string> objectForInfoDictionaryKey(std::string_view key) const override;
    /// The path of the executable when the process started, also after an update has replaced the
    /// file.
    std::string bundlePath() const override;
    std::string openCommand() const override;

  private:
    std::string executable_;
};

}  // namespace tarvik::linuxdesktop
