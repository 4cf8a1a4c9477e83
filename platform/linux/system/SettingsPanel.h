// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::linuxdesktop {

/// A page of a desktop's settings to which the application has a link.
enum class SettingsPanel { microphone, accessibility };

/// A program that shows a page of the settings.
struct PanelCommand {
    std::string program;
    std::vector<std::string> arguments;
};

/// The page to which `link` leads; empty for any other link.
std::optional<SettingsPanel> settingsPanelOf(std::string_view link);

/// The commands that show the page, the best one first; the programs need not be installed.
/// `currentDesktop` is the value of XDG_CURRENT_DESKTOP: names of desktops, the most specific
/// first, separated by colons.
std::vector<PanelCommand> commandsFor(SettingsPanel panel, std::string_view currentDesktop);

}  // namespace tarvik::linuxdesktop
