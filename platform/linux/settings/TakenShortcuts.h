// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarvik::linuxdesktop {

/// A note of the shortcuts that another part of the desktop has given up for this application, with
/// the user's consent. The note is a file of the user, one line a shortcut. It outlives the
/// process, so that the shortcuts go back also after a crash. One thread; every operation waits for
/// the disk.
class TakenShortcuts {
  public:
    /// `name` is that of the file.
    explicit TakenShortcuts(const std::string& name);

    /// Empty without a note.
    std::optional<std::vector<std::string>> lines() const;
    /// False when the note cannot be written, and is what it was.
    bool write(const std::vector<std::string>& lines) const;
    void remove() const;

  private:
    const std::string path_;
};

}  // namespace tarvik::linuxdesktop
