// SPDX-License-Identifier: MIT
//
// kwin-consent ask|do-not-ask STEP    one run of the hotkeys in KDE, killed before the step

#include <cstdlib>
#include <string>

#include "platform/linux/kwin/KWinInput.h"
#include "tests/linux/input/ConsentRun.h"
#include "tests/linux/input/KillStep.h"

int main(int argumentCount, char** arguments) {
    using namespace tarvik::tests;
    if (argumentCount < 3) {
        return EXIT_FAILURE;
    }
    killBeforeStep(std::atoi(arguments[2]), Steps::filesAndMessages);
    return runWithConsent(
        std::string(arguments[1]) == "ask", [](auto& mainQueue, auto& log, const auto& listener) {
            return std::make_unique<tarvik::linuxdesktop::KWinInput>(mainQueue, log, listener);
        });
}
