// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "base/Text.h"
#include "platform/linux/DesktopInput.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/kwin/KWinUser.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// The input of a KWin session.
class KWinFixture : public testing::Test {
  protected:
    // KWin 5 is busy for a while after each program that comes.
    KWinFixture() { KWinUser::ownerOf(hold); }

    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;

    /// Posts a text as the core does, in runs of 20 UTF-16 units.
    void type(std::string_view text, platform::ProcessIdentifier process) {
        auto& keyboard = input->keyboardEvents();
        const auto source = keyboard.createSource(platform::eventSourceStateCombinedSession);
        const std::u16string units = utf16FromUtf8(text);
        for (std::size_t first = 0; first < units.size(); first += 20) {
            const auto event = keyboard.createKeyboardEvent(source, 0, true);
            ASSERT_NE(event, nullptr);
            keyboard.setUnicodeString(*event, std::u16string_view(units).substr(first, 20));
            keyboard.postToPid(process, event);
        }
    }

    bool becomes(const HotKeyRecorder& recorder, std::string_view events,
                 std::chrono::milliseconds timeout = std::chrono::seconds(3)) {
        const bool holds = mainQueue.runUntil([&] { return recorder.events == events; }, timeout);
        EXPECT_EQ(recorder.events, events);
        return holds;
    }
    void pressHold() {
        user.press(KWinUser::altKey);
        user.press(KWinUser::spaceKey);
    }
    void releaseHold() {
        user.release(KWinUser::spaceKey);
        user.release(KWinUser::altKey);
    }

    RealTimeQueue mainQueue;
    RecordingLog log;
    KWinUser user;
    std::optional<linuxdesktop::DesktopInput> input{std::in_place, mainQueue, log};
};

}  // namespace tarvik::tests
