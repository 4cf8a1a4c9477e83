// SPDX-License-Identifier: MIT

#include <xkbcommon/xkbcommon-keysyms.h>

#include <array>
#include <chrono>
#include <string>

#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

// A person who presses the hotkeys while others change the keyboard. The window manager grabs
// Alt+Space again after each change of the map, and would show its menu.
class X11HotKeyStorm : public InputFixture, public testing::Test {
  protected:
    X11HotKeyStorm() {
        EXPECT_EQ(recorder.add(hold, 1), platform::noErr);
        EXPECT_EQ(recorder.add(toggle, 2), platform::noErr);
    }

    // Different from press to press.
    void waitAfterChange(int press) {
        constexpr std::array delays{0ms, 1ms, 3ms, 6ms, 10ms, 20ms, 40ms};
        const auto delay = delays[static_cast<std::size_t>(press) % delays.size()];
        if (delay > 0ms) {
            mainQueue.runFor(delay);
        }
    }
    // Every third press is that of the other hotkey. The keys are down for as short as a person
    // can.
    void expectToBeHeard(int press) {
        const bool isToggle = press % 3 == 2;
        const std::string expected = isToggle ? "P2R2" : "P1R1";
        recorder.events.clear();
        if (isToggle) {
            user->press(X11User::shiftKey);
        }
        pressHold();
        mainQueue.runFor(30ms);
        releaseHold();
        if (isToggle) {
            user->release(X11User::shiftKey);
        }
        EXPECT_TRUE(becomes(recorder, expected)) << "press " << press;
        mainQueue.runFor(5ms);
        EXPECT_EQ(recorder.events, expected) << "press " << press;
    }

    const X11Target target{X11Target::Kind::terminal, mainQueue};
    HotKeyRecorder recorder{input->eventManager()};
};

TEST_F(X11HotKeyStorm, HearsEveryPressAfterASwitchOfTheLayout) {
    constexpr std::array layouts{"de", "us", "us,ru", "fr"};
    for (int press = 0; press < 40; ++press) {
        setLayout({layouts[static_cast<std::size_t>(press) % layouts.size()]});
        waitAfterChange(press);
        expectToBeHeard(press);
    }
    EXPECT_EQ(target.text(), "");
}

TEST_F(X11HotKeyStorm, HearsEveryPressAfterAChangeOfTheMap) {
    for (int press = 0; press < 80; ++press) {
        user->setSymbol(X11User::pauseKey, press % 2 == 0 ? 'x' : 'y');
        waitAfterChange(press);
        expectToBeHeard(press);
    }
    user->setSymbol(X11User::pauseKey, XKB_KEY_Pause);
    EXPECT_EQ(target.text(), "");
}

TEST_F(X11HotKeyStorm, HearsEveryPressWhileOthersGrabTheKeyboard) {
    X11User other;
    for (int press = 0; press < 80; ++press) {
        const bool isGrabbed = press % 2 == 0 && other.tryToGrabWholeKeyboard();
        if (press % 8 == 0) {
            user->setSymbol(X11User::pauseKey, press % 16 == 0 ? 'x' : 'y');
        }
        waitAfterChange(press);
        expectToBeHeard(press);
        if (isGrabbed) {
            other.releaseWholeKeyboard();
        }
    }
    user->setSymbol(X11User::pauseKey, XKB_KEY_Pause);
    EXPECT_EQ(target.text(), "");
}

}  // namespace

}  // namespace tarvik::tests
