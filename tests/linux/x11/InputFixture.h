// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Text.h"
#include "platform/linux/DesktopInput.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/x11/WindowManager.h"
#include "tests/linux/x11/X11Target.h"
#include "tests/linux/x11/X11User.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// What a log says from a line on, without the reasons why no Wayland desktop serves: a build may
/// leave those out.
inline std::vector<std::string> linesWithoutWayland(const RecordingLog& log,
                                                    std::size_t first = 0) {
    std::vector<std::string> lines = log.lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(first));
    std::erase_if(lines, [](const std::string& line) {
        return line.find("SWAYSOCK") != line.npos || line.find("KWin") != line.npos ||
               line.find("WAYLAND_DISPLAY") != line.npos ||
               line.find("no Wayland compositor") != line.npos;
    });
    return lines;
}

/// The X11 input on a desktop with a window manager that binds Alt+Space itself.
class InputFixture {
  public:
    /// Loads a keyboard map; the arguments are those of setxkbmap.
    static void setLayout(const std::vector<std::string>& arguments) {
        std::vector<std::string> command{"setxkbmap"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(TestProcess::run(command).status, 0);
    }

  protected:
    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;

    // Hotkeys that are grabbed afterwards come before the window manager's.
    InputFixture() {
        setLayout({"us"});
        EXPECT_TRUE(waitForWindowManager(mainQueue));
    }
    ~InputFixture() { setLayout({"us"}); }

    /// Posts a text as the core does, in runs of 20 UTF-16 units.
    void type(std::string_view text, std::optional<platform::ProcessIdentifier> process) {
        auto& keyboard = input->keyboardEvents();
        const auto source = keyboard.createSource(platform::eventSourceStateCombinedSession);
        const std::u16string units = utf16FromUtf8(text);
        for (std::size_t first = 0; first < units.size(); first += 20) {
            const auto run = std::u16string_view(units).substr(first, 20);
            for (const bool isDown : {true, false}) {
                const auto event = keyboard.createKeyboardEvent(source, 0, isDown);
                ASSERT_NE(event, nullptr);
                keyboard.setUnicodeString(*event, run);
                if (process) {
                    keyboard.postToPid(*process, event);
                } else {
                    keyboard.post(platform::hidEventTap, event);
                }
            }
        }
    }

    bool becomes(const X11Target& target, std::string_view text) {
        const bool holds =
            mainQueue.runUntil([&] { return target.text() == text; }, std::chrono::seconds(20));
        EXPECT_EQ(target.text(), text);
        for (const std::string& line : holds ? std::vector<std::string>() : log.lines()) {
            ADD_FAILURE() << line;
        }
        return holds;
    }
    bool becomes(const HotKeyRecorder& recorder, std::string_view events) {
        const bool holds = mainQueue.runUntil([&] { return recorder.events == events; });
        EXPECT_EQ(recorder.events, events);
        return holds;
    }
    bool comesToFront(const X11Target& target) {
        return mainQueue.runUntil([&] { return input->chooseTarget() == target.process(); });
    }
    void pressHold() {
        user->press(X11User::altKey);
        user->press(X11User::spaceKey);
    }
    void releaseHold() {
        user->release(X11User::spaceKey);
        user->release(X11User::altKey);
    }

    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<X11User> user{std::in_place};
    std::optional<linuxdesktop::DesktopInput> input{std::in_place, mainQueue, log};
};

}  // namespace tarvik::tests
