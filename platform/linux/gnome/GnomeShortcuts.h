// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/gnome/GnomeSettings.h"

namespace tarvik::linuxdesktop {

/// The keyboard shortcuts in GNOME's settings: which of them has a combination of the space bar,
/// and custom shortcuts of this application's own. Modifiers are a mask of the event manager. Each
/// operation waits for GNOME's store of settings. One thread.
class GnomeShortcuts {
  public:
    /// Why this version of GNOME has no custom shortcuts; empty when it has.
    std::optional<std::string> refusal() const;

    /// What has the combination, as the user knows it; empty when nobody has. A shortcut of this
    /// application does not count.
    std::optional<std::string> ownerOf(std::uint32_t modifiers) const;

    /// Has GNOME run `command` when the combination is pressed. False when GNOME does not take it.
    bool bind(std::uint32_t modifiers, const std::string& command);
    void unbind(std::uint32_t modifiers);
    /// Removes what a process of this application has left that was killed.
    void unbindAll();
};

/// Whether GNOME's text of a shortcut, like "<Alt><Shift>space", is the space bar with these
/// modifiers and no others.
bool isSpaceWith(std::uint32_t modifiers, const std::string& accelerator);

}  // namespace tarvik::linuxdesktop
