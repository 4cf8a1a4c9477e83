// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/WindowMenuShortcut.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "platform/EventManager.h"
#include "platform/linux/gnome/GnomeShortcuts.h"

namespace tarvik::linuxdesktop {

namespace {

using Texts = GnomeSettings::Texts;

constexpr const char* schema = "org.gnome.desktop.wm.keybindings";
constexpr const char* menuKey = "activate-window-menu";

// The first line of the note. After a kill between two steps the note says that the shortcut is
// taken. So the menu gets the shortcut back, or has it already.
constexpr const char* takenWord = "taken";
constexpr const char* takenFromDefaultWord = "taken from the default";
constexpr const char* agreedWord = "agreed";

bool isAltSpace(const std::string& accelerator) {
    return isSpaceWith(platform::optionKeyMask, accelerator);
}

bool hasAltSpace(const Texts& accelerators) {
    return std::ranges::any_of(accelerators, isAltSpace);
}

Texts withoutAltSpace(Texts accelerators) {
    std::erase_if(accelerators, isAltSpace);
    return accelerators;
}

}  // namespace

bool WindowMenuShortcut::isInMenu() const {
    return hasAltSpace(GnomeSettings(schema).texts(menuKey).value_or(Texts{}));
}

std::optional<WindowMenuShortcut::Taken> WindowMenuShortcut::taken() const {
    const auto lines = note_.lines();
    if (lines && *lines == Texts{takenFromDefaultWord}) {
        return Taken{};
    }
    // A note that somebody else has written gives nothing.
    if (!lines || lines->empty() || lines->front() != takenWord || !hasAltSpace(*lines)) {
        return std::nullopt;
    }
    return Taken{Texts(std::next(lines->begin()), lines->end())};
}

bool WindowMenuShortcut::take() {
    GnomeSettings settings(schema);
    const auto had = settings.texts(menuKey);
    if (!had || !hasAltSpace(*had)) {
        return false;
    }
    std::vector<std::string> lines{takenFromDefaultWord};
    if (settings.isSet(menuKey)) {
        lines = {takenWord};
        std::ranges::copy(*had, std::back_inserter(lines));
    }
    // Without the note nothing is taken: it could not be given back.
    return note_.write(lines) && settings.set(menuKey, withoutAltSpace(*had));
}

bool WindowMenuShortcut::takeAgain() {
    return note_.lines() == Texts{agreedWord} && take();
}

void WindowMenuShortcut::giveBack() {
    const auto had = taken();
    if (!had) {
        return;
    }
    GnomeSettings settings(schema);
    const Texts left = settings.texts(menuKey).value_or(Texts{});
    if (hasAltSpace(left)) {
        note_.remove();
        return;
    }
    const Texts before = had->set ? *had->set : settings.defaultTexts(menuKey).value_or(Texts{});
    bool isBack = true;
    if (left != withoutAltSpace(before)) {
        // The user has given the menu other shortcuts meanwhile.
        Texts more = left;
        std::ranges::copy_if(before, std::back_inserter(more), isAltSpace);
        isBack = settings.set(menuKey, more);
    } else if (had->set) {
        isBack = settings.set(menuKey, before);
    } else {
        settings.reset(menuKey);
    }
    // Otherwise the next run gives the shortcut back. Without the note the user is asked again.
    if (isBack && !note_.write({agreedWord})) {
        note_.remove();
    }
}

}  // namespace tarvik::linuxdesktop
