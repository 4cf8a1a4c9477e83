#include "settings/Relaunch.h"

namespace tarvik {

// The path is only wrapped in quotes: it is the application's own, not a user's text.
void relaunch(platform::Platform& platform, const std::string& delay) {
    const platform::Bundle& bundle = platform.bundle();
    // A failure leaves nothing to do: the application ends either way, and is then started by hand.
    static_cast<void>(platform.taskLauncher().launch(
        "/bin/sh", {"-c", "sleep " + delay + " && " + bundle.openCommand() + " \"" +
                              bundle.bundlePath() + "\""}));
    platform.application().terminate();
}

}  // namespace tarvik
