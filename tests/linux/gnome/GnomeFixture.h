// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/linux/gnome/GnomeUser.h"
#include "tests/linux/input/SessionFixture.h"

namespace tarvik::tests {

/// The input of a GNOME session.
class GnomeFixture : public SessionFixture<GnomeUser> {
  protected:
    static constexpr const char* windowSchema = "org.gnome.desktop.wm.keybindings";
    static constexpr const char* windowMenu = "activate-window-menu";

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
};

}  // namespace tarvik::tests
