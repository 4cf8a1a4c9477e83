#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik::linuxdesktop {

/// A page of a desktop's settings that the application has a link to.
enum class SettingsPanel { microphone, accessibility };

struct PanelCommand {
    std::string program;
    std::vector<std::string> arguments;
};

/// The page that the link stands for; empty for any other link.
std::optional<SettingsPanel> settingsPanelOf(std::string_view link);

/// What shows the page, the best first; the programs need not be installed. `currentDesktop` is the
/// value of XDG_CURRENT_DESKTOP: names of desktops, the closest first, separated by colons.
std::vector<PanelCommand> commandsFor(SettingsPanel panel, std::string_view currentDesktop);

}  // namespace tarvik::linuxdesktop
