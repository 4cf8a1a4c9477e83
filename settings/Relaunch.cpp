// SPDX-License-Identifier: MIT

#include "settings/Relaunch.h"

namespace tarvik {

// Quotes are enough for the path: it is the application's own path and not a user's text.
void relaunch(platform::Platform& platform, const std::string& delay) {
    const platform::Bundle& bundle = platform.bundle();
    // There is no remedy for a failure: the application ends, and the user starts it by hand.
    static_cast<void>(platform.taskLauncher().launch(
        "/bin/sh", {"-c", "sleep " + delay + " && " + bundle.openCommand() + " \"" +
                              bundle.bundlePath() + "\""}));
    platform.application().terminate();
}

}  // namespace tarvik
