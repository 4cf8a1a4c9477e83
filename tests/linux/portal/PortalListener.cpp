// SPDX-License-Identifier: MIT

// Asks the portal of the session at hand for both hotkeys, and prints what comes: "P1" and "R1" for
// the hold hotkey, "P2" and "R2" for the toggle, and the lines of the log. For desktops that no
// test has. Ends after the number of seconds that is its argument.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/linux/input/LinuxEventManager.h"
#include "platform/linux/portal/PortalInput.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/support/RealTimeQueue.h"

namespace {

using namespace tarvik;

class PrintingLog final : public platform::Log {
  public:
    void write(std::string_view line) override {
        std::printf("%.*s\n", static_cast<int>(line.size()), line.data());
        std::fflush(stdout);
    }
};

}  // namespace

int main(int argumentCount, char** arguments) {
    PrintingLog log;
    tests::RealTimeQueue mainQueue;
    const auto manager = std::make_shared<linuxdesktop::LinuxEventManager>(log);
    linuxdesktop::PortalInput input(mainQueue, log, manager);
    if (const auto& refusal = input.refusal()) {
        log.write("refused: " + *refusal);
        return EXIT_FAILURE;
    }
    manager->setMeans(&input);
    tests::HotKeyRecorder recorder(*manager);
    recorder.onEvent = [&] {
        log.write(recorder.events);
        recorder.events.clear();
    };
    log.write("registered: " + std::to_string(recorder.add(tests::HotKeyRecorder::hold, 1)) + ", " +
              std::to_string(recorder.add(tests::HotKeyRecorder::toggle, 2)));
    const int seconds = argumentCount > 1 ? std::atoi(arguments[1]) : 60;
    mainQueue.runFor(std::chrono::seconds(seconds));
    return EXIT_SUCCESS;
}
