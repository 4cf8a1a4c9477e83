// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "base/Error.h"

namespace tarvik::linuxdesktop {

/// The entry of KWin's settings that names the input method which KWin starts. The entry belongs to
/// the user. This program has it for a while, and only where nobody else has it. One thread; every
/// operation waits for the disk.
class InputMethodSetting {
  public:
    /// `desktopFile` (absolute) is what this program writes into the entry.
    explicit InputMethodSetting(std::string desktopFile);

    /// The input method of the user or of the system, a path; empty when there is none but ours.
    std::string other() const;
    /// Writes the entry. An error leaves the settings as they were.
    std::optional<Error> take();
    /// Makes the settings what they were before take(), also before that of a killed process. False
    /// when there is no entry of ours, or when the settings cannot be written.
    bool giveBack();

  private:
    const std::string desktopFile_;
    // The settings of the user.
    const std::string path_;
};

}  // namespace tarvik::linuxdesktop
