// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/Log.h"

namespace tarvik::linuxdesktop {

/// The desktop file that lets this program see the windows of KWin and press keys there. KWin looks
/// for a desktop file that starts the program at its own path. The packages install one; a program
/// that runs from elsewhere makes one for this user and the time of the run. One thread; waits for
/// the disk.
class KWinPermission {
  public:
    /// `log` outlives the object.
    explicit KWinPermission(platform::Log& log);
    /// Removes the file, also one that an earlier run has left.
    ~KWinPermission();
    KWinPermission(const KWinPermission&) = delete;
    KWinPermission& operator=(const KWinPermission&) = delete;

    /// Makes the file. False when the file is there, or cannot be made. The log has a line, unless
    /// the file is there.
    bool request();

  private:
    platform::Log& log_;
    const std::string path_;
};

}  // namespace tarvik::linuxdesktop
