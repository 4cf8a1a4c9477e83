// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeShortcuts.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "platform/EventManager.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr const char* windowSchema = "org.gnome.desktop.wm.keybindings";
constexpr const char* windowMenuKey = "activate-window-menu";
constexpr const char* customListSchema = "org.gnome.settings-daemon.plugins.media-keys";
constexpr const char* customListKey = "custom-keybindings";
constexpr const char* customSchema =
    "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding";
constexpr const char* customFolder =
    "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/";

std::string ownPath(std::uint32_t modifiers) {
    return std::string(customFolder) + ((modifiers & platform::shiftKeyMask) != 0
                                            ? "tarvik-dictate-toggle/"
                                            : "tarvik-dictate-hold/");
}

std::string acceleratorOf(std::uint32_t modifiers) {
    return std::string((modifiers & platform::optionKeyMask) != 0 ? "<Alt>" : "") +
           ((modifiers & platform::shiftKeyMask) != 0 ? "<Shift>" : "") + "space";
}

bool isAnySpaceWith(std::uint32_t modifiers, const GnomeSettings::Texts& accelerators) {
    return std::ranges::any_of(accelerators, [modifiers](const std::string& accelerator) {
        return isSpaceWith(modifiers, accelerator);
    });
}

GnomeSettings::Texts customPaths() {
    return GnomeSettings(customListSchema).texts(customListKey).value_or(GnomeSettings::Texts{});
}

}  // namespace

bool isSpaceWith(std::uint32_t modifiers, const std::string& accelerator) {
    std::set<std::string> names;
    std::string rest;
    std::ranges::transform(accelerator, std::back_inserter(rest),
                           [](unsigned char character) { return std::tolower(character); });
    while (rest.starts_with('<') && rest.find('>') != std::string::npos) {
        const auto end = rest.find('>');
        const std::string name = rest.substr(1, end - 1);
        names.insert(name == "mod1" ? "alt" : name);
        rest.erase(0, end + 1);
    }
    std::set<std::string> wanted;
    if ((modifiers & platform::optionKeyMask) != 0) {
        wanted.insert("alt");
    }
    if ((modifiers & platform::shiftKeyMask) != 0) {
        wanted.insert("shift");
    }
    return rest == "space" && names == wanted;
}

std::optional<std::string> GnomeShortcuts::refusal() const {
    if (!GnomeSettings(customListSchema).has(customListKey)) {
        return "GNOME has no custom shortcuts";
    }
    return std::nullopt;
}

std::optional<std::string> GnomeShortcuts::ownerOf(std::uint32_t modifiers) const {
    for (const char* schema :
         {windowSchema, "org.gnome.shell.keybindings", "org.gnome.mutter.keybindings",
          "org.gnome.mutter.wayland.keybindings", customListSchema}) {
        const GnomeSettings settings(schema);
        for (const std::string& key : settings.keys()) {
            const auto accelerators = settings.texts(key);
            if (accelerators && isAnySpaceWith(modifiers, *accelerators)) {
                return key == windowMenuKey ? "the menu of windows (" + key + ")" : key;
            }
        }
    }
    for (const std::string& path : customPaths()) {
        const GnomeSettings custom(customSchema, path);
        if (path != ownPath(modifiers) &&
            isSpaceWith(modifiers, custom.text("binding").value_or(""))) {
            return "the custom shortcut “" + custom.text("name").value_or("") + "”";
        }
    }
    return std::nullopt;
}

bool GnomeShortcuts::bind(std::uint32_t modifiers, const std::string& command) {
    const std::string path = ownPath(modifiers);
    GnomeSettings custom(customSchema, path);
    const bool isToggle = (modifiers & platform::shiftKeyMask) != 0;
    if (!custom.set("name", std::string("Tarvik Dictate: ") +
                                (isToggle ? "start or stop" : "hold to talk")) ||
        !custom.set("command", command) || !custom.set("binding", acceleratorOf(modifiers))) {
        return false;
    }
    GnomeSettings::Texts paths = customPaths();
    if (std::ranges::find(paths, path) != paths.end()) {
        return true;
    }
    paths.push_back(path);
    return GnomeSettings(customListSchema).set(customListKey, paths);
}

void GnomeShortcuts::unbindAll() {
    for (const std::uint32_t modifiers :
         {platform::optionKeyMask, platform::optionKeyMask | platform::shiftKeyMask}) {
        const GnomeSettings::Texts paths = customPaths();
        if (std::ranges::find(paths, ownPath(modifiers)) != paths.end()) {
            unbind(modifiers);
        }
    }
}

void GnomeShortcuts::unbind(std::uint32_t modifiers) {
    const std::string path = ownPath(modifiers);
    GnomeSettings::Texts paths = customPaths();
    if (std::erase(paths, path) > 0) {
        GnomeSettings list(customListSchema);
        // A list that was never touched has no value of its own.
        if (paths.empty()) {
            list.reset(customListKey);
        } else {
            list.set(customListKey, paths);
        }
    }
    GnomeSettings custom(customSchema, path);
    for (const char* key : {"name", "command", "binding"}) {
        custom.reset(key);
    }
}

}  // namespace tarvik::linuxdesktop
