// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/input/LinuxEventManager.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// One run of an application that registers both hotkeys, from the start of its input to the end.
/// The user asks for a combination that another part of the desktop has, if `hasConsent`. Returns
/// the status for main().
///
/// `open` makes the means, a pointer, from the main queue, the log and the listener.
template <typename Open>
int runWithConsent(bool hasConsent, Open open) {
    using namespace std::chrono_literals;
    RealTimeQueue mainQueue;
    RecordingLog log;
    const auto manager = std::make_shared<linuxdesktop::LinuxEventManager>(log);
    auto means = open(mainQueue, log, manager);
    manager->setMeans(means.get());
    std::optional<HotKeyRecorder> recorder(*manager);
    recorder->add(HotKeyRecorder::hold, 1);
    recorder->add(HotKeyRecorder::toggle, 2);
    bool isRegistered = true;
    if (hasConsent && means->canTakeOver()) {
        means->takeOver();
        isRegistered = mainQueue.runUntil(
            [&] { return log.hasLineWith("a hotkey is registered now: Alt+Space"); }, 10s);
    }
    recorder.reset();
    means.reset();
    return isRegistered ? 0 : 1;
}

}  // namespace tarvik::tests
