// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "platform/linux/DesktopInput.h"
#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/sway/SwayUser.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// The input of a Sway session, or of another session with the same keyboard and programs.
class SwayFixture {
  protected:
    explicit SwayFixture(
        std::shared_ptr<linuxdesktop::AccessibilityWorker> accessibilityWorker = nullptr)
        : worker(std::move(accessibilityWorker)) {}

    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;

    /// Posts a text as the core does, in runs of 20 UTF-16 units.
    void type(std::string_view text, std::optional<platform::ProcessIdentifier> process) {
        auto& keyboard = input->keyboardEvents();
        const auto source = keyboard.createSource(platform::eventSourceStateCombinedSession);
        const std::u16string units = utf16FromUtf8(text);
        for (std::size_t first = 0; first < units.size(); first += 20) {
            const auto event = keyboard.createKeyboardEvent(source, 0, true);
            ASSERT_NE(event, nullptr);
            keyboard.setUnicodeString(*event, std::u16string_view(units).substr(first, 20));
            if (process) {
                keyboard.postToPid(*process, event);
            } else {
                keyboard.post(platform::hidEventTap, event);
            }
        }
    }

    bool becomes(const X11Target& target, std::string_view text,
                 std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
        const bool holds = mainQueue.runUntil([&] { return target.text() == text; }, timeout);
        EXPECT_EQ(target.text(), text);
        if (!holds) {
            tellLog();
        }
        return holds;
    }
    bool becomes(const HotKeyRecorder& recorder, std::string_view events,
                 std::chrono::milliseconds timeout = std::chrono::seconds(3)) {
        const bool holds = mainQueue.runUntil([&] { return recorder.events == events; }, timeout);
        EXPECT_EQ(recorder.events, events);
        return holds;
    }
    bool comesToFront(const X11Target& target) {
        return mainQueue.runUntil([&] { return input->chooseTarget() == target.process(); });
    }
    void pressHold() {
        user.press(SwayUser::altKey);
        user.press(SwayUser::spaceKey);
    }
    void releaseHold() {
        user.release(SwayUser::spaceKey);
        user.release(SwayUser::altKey);
    }
    void tellLog() {
        for (const std::string& line : log.lines()) {
            ADD_FAILURE() << line;
        }
    }

    const std::shared_ptr<linuxdesktop::AccessibilityWorker> worker;
    RealTimeQueue mainQueue;
    RecordingLog log;
    SwayUser user;
    std::optional<linuxdesktop::DesktopInput> input{
        std::in_place, mainQueue, log,
        worker ? std::shared_ptr<const linuxdesktop::AccessibilityState>(worker, &worker->state())
               : nullptr};
};

}  // namespace tarvik::tests
