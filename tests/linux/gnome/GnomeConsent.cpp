// SPDX-License-Identifier: MIT
//
// gnome-consent settings               prints the user's settings that a run touches
// gnome-consent ask|do-not-ask STEP    one run, killed before the step

#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/linux/gnome/GnomeInput.h"
#include "platform/linux/gnome/GnomeSettings.h"
#include "tests/linux/input/ConsentRun.h"
#include "tests/linux/input/KillStep.h"

namespace {

using tarvik::linuxdesktop::GnomeInput;
using tarvik::linuxdesktop::GnomeSettings;

void print(const GnomeSettings& settings, const std::string& key) {
    std::cout << key << (settings.isSet(key) ? " set:" : " default:");
    if (const auto texts = settings.texts(key)) {
        for (const std::string& text : *texts) {
            std::cout << ' ' << text;
        }
    }
    std::cout << settings.text(key).value_or("") << '\n';
}

void printSettings() {
    print(GnomeSettings("org.gnome.desktop.wm.keybindings"), "activate-window-menu");
    const std::string media = "org.gnome.settings-daemon.plugins.media-keys";
    print(GnomeSettings(media), "custom-keybindings");
    for (const char* name : {"hold", "toggle"}) {
        const GnomeSettings own(media + ".custom-keybinding",
                                "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/"
                                "tarvik-dictate-" +
                                    std::string(name) + "/");
        for (const char* key : {"name", "command", "binding"}) {
            print(own, key);
        }
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    using namespace tarvik::tests;
    if (argumentCount < 3) {
        printSettings();
        return EXIT_SUCCESS;
    }
    killBeforeStep(std::atoi(arguments[2]), Steps::files);
    return runWithConsent(
        std::string(arguments[1]) == "ask", [](auto& mainQueue, auto& log, const auto& listener) {
            return std::make_unique<GnomeInput>(mainQueue, log, listener, GnomeInput::Front());
        });
}
