// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/Log.h"

namespace tarvik::linuxdesktop {

/// A desktop file of this program, for this user and the time of the run. Some parts of a desktop
/// serve only programs with a desktop file. The packages install one; a program that runs from
/// elsewhere, as from a build folder, has none. One thread; every operation waits for the disk.
class TemporaryDesktopFile {
  public:
    struct Description {
        /// The name of the file, without its ending.
        std::string name;
        /// Lines that follow those of every desktop file, each with its line break.
        std::string entries;
        /// Who wants the file, and why it is made, for the log: "no desktop file for <receiver>:
        /// …", and "<lack> <this program>; until …".
        std::string receiver;
        std::string lack;
    };

    /// `log` outlives the object.
    TemporaryDesktopFile(platform::Log& log, Description description);
    /// Removes the file, also one that an earlier run has left.
    ~TemporaryDesktopFile();
    TemporaryDesktopFile(const TemporaryDesktopFile&) = delete;
    TemporaryDesktopFile& operator=(const TemporaryDesktopFile&) = delete;

    /// Makes the file. False when the file is there, or cannot be made. The log has a line, unless
    /// the file is there.
    bool make();
    /// As make(). With a file of the same name that a package or the user has installed, removes
    /// the file that an earlier run has left, and makes none.
    bool makeUnlessInstalled();

  private:
    void remove();

    platform::Log& log_;
    const Description description_;
    const std::string path_;
};

}  // namespace tarvik::linuxdesktop
