// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/linux/gnome/GnomeSettings.h"
#include "platform/linux/settings/TakenShortcuts.h"

namespace tarvik::linuxdesktop {

/// Alt+Space as the shortcut of GNOME's menu of windows, which gives the shortcut up with the
/// user's consent and gets it back. A note of the user tells whether the menu is without the
/// shortcut, and what the menu had. One thread; each operation waits for GNOME's store of settings
/// and for the disk.
class WindowMenuShortcut {
  public:
    /// Whether the menu has Alt+Space.
    bool isInMenu() const;

    /// Takes Alt+Space from the menu, whose other shortcuts stay. False when the menu does not have
    /// it, or when the note or the setting cannot be written.
    bool take();
    /// As take(), where the user has agreed to it and the menu has Alt+Space back since, as at the
    /// end of an earlier run. False otherwise.
    bool takeAgain();
    /// Gives back what was taken, also by a run that was killed. A user who has given the menu
    /// Alt+Space again has taken the agreement back.
    void giveBack();

  private:
    // What the menu had; empty where the setting had GNOME's own value.
    struct Taken {
        std::optional<GnomeSettings::Texts> set;
    };

    std::optional<Taken> taken() const;

    const TakenShortcuts note_{"gnome-window-menu"};
};

}  // namespace tarvik::linuxdesktop
