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
#include "tests/linux/gnome/GnomeUser.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// The input of a GNOME session.
class GnomeFixture {
  protected:
    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;
    static constexpr const char* windowSchema = "org.gnome.desktop.wm.keybindings";
    static constexpr const char* windowMenu = "activate-window-menu";

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
                 std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
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
    /// Registers a hotkey, and waits until GNOME hears it, which nothing else tells. Waits then
    /// until the commands of all presses have called.
    void add(HotKeyRecorder& recorder, std::uint32_t modifiers, std::uint32_t id) {
        using namespace std::chrono_literals;
        ASSERT_EQ(recorder.add(modifiers, id), platform::noErr);
        const bool isHeard = mainQueue.runUntil(
            [&] {
                press(modifiers);
                release(modifiers);
                return mainQueue.runUntil([&] { return !recorder.events.empty(); }, 3s);
            },
            30s);
        ASSERT_TRUE(isHeard);
        std::size_t known = 0;
        do {
            ASSERT_TRUE(mainQueue.runUntil([&] {
                return recorder.events.ends_with("R" + std::to_string(id));
            })) << recorder.events;
            known = recorder.events.size();
            mainQueue.runFor(1500ms);
        } while (recorder.events.size() != known);
        recorder.events.clear();
    }

    void press(std::uint32_t modifiers) {
        user.press(GnomeUser::altKey);
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user.press(GnomeUser::shiftKey);
        }
        user.press(GnomeUser::spaceKey);
    }
    void release(std::uint32_t modifiers) {
        user.release(GnomeUser::spaceKey);
        if ((modifiers & platform::shiftKeyMask) != 0) {
            user.release(GnomeUser::shiftKey);
        }
        user.release(GnomeUser::altKey);
    }
    bool returnsToLayout() {
        return mainQueue.runUntil([] { return GnomeUser::engine() == "xkb:us::eng"; });
    }
    void tellLog() {
        for (const std::string& line : log.lines()) {
            ADD_FAILURE() << line;
        }
    }

    RealTimeQueue mainQueue;
    RecordingLog log;
    GnomeUser user;
    std::optional<linuxdesktop::DesktopInput> input{std::in_place, mainQueue, log};
};

}  // namespace tarvik::tests
