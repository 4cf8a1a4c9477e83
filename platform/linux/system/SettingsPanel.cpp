// SPDX-License-Identifier: MIT

#include "platform/linux/system/SettingsPanel.h"

#include <algorithm>

namespace tarvik::linuxdesktop {

namespace {

struct Entry {
    std::string_view desktop;
    SettingsPanel panel;
    const char* program;
    std::vector<std::string> arguments;
};

// The program of the settings has different names in different releases of Plasma 5.
const std::vector<Entry>& entries() {
    using enum SettingsPanel;
    static const std::vector<Entry> all = {
        {"GNOME", microphone, "gnome-control-center", {"sound"}},
        {"GNOME", accessibility, "gnome-control-center", {"universal-access"}},
        {"KDE", microphone, "systemsettings", {"kcm_pulseaudio"}},
        {"KDE", microphone, "systemsettings5", {"kcm_pulseaudio"}},
        {"KDE", accessibility, "systemsettings", {"kcm_access"}},
        {"KDE", accessibility, "systemsettings5", {"kcm_access"}},
        {"XFCE", microphone, "pavucontrol", {"--tab=4"}},
        {"XFCE", accessibility, "xfce4-accessibility-settings", {}},
        {"X-Cinnamon", microphone, "cinnamon-settings", {"sound"}},
        {"X-Cinnamon", accessibility, "cinnamon-settings", {"universal-access"}},
        {"MATE", microphone, "mate-volume-control", {}},
        {"MATE", accessibility, "mate-at-properties", {}},
        {"LXQt", microphone, "pavucontrol-qt", {"--tab=4"}},
    };
    return all;
}

}  // namespace

std::optional<SettingsPanel> settingsPanelOf(std::string_view link) {
    constexpr std::string_view privacy =
        "x-apple.systempreferences:com.apple.preference.security?Privacy_";
    if (!link.starts_with(privacy)) {
        return std::nullopt;
    }
    const std::string_view page = link.substr(privacy.size());
    return page == "Microphone"      ? std::optional(SettingsPanel::microphone)
           : page == "Accessibility" ? std::optional(SettingsPanel::accessibility)
                                     : std::nullopt;
}

std::vector<PanelCommand> commandsFor(SettingsPanel panel, std::string_view currentDesktop) {
    std::vector<PanelCommand> commands;
    while (!currentDesktop.empty()) {
        const std::size_t end = std::min(currentDesktop.find(':'), currentDesktop.size());
        for (const Entry& entry : entries()) {
            if (entry.panel == panel && entry.desktop == currentDesktop.substr(0, end)) {
                commands.push_back({entry.program, entry.arguments});
            }
        }
        currentDesktop.remove_prefix(std::min(end + 1, currentDesktop.size()));
    }
    // pavucontrol works with every sound server. Its fourth tab has the microphones.
    const bool hasMixer = std::any_of(commands.begin(), commands.end(), [](const auto& command) {
        return command.program == "pavucontrol";
    });
    if (panel == SettingsPanel::microphone && !hasMixer) {
        commands.push_back({"pavucontrol", {"--tab=4"}});
    }
    return commands;
}

}  // namespace tarvik::linuxdesktop
