// SPDX-License-Identifier: MIT

#include <xkbcommon/xkbcommon-keysyms.h>

#include <array>
#include <chrono>
#include <random>
#include <string>

#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

// A person who presses the hotkeys while others change the keyboard. The window manager grabs
// Alt+Space again after each change of the map, and shows a menu at each press that it hears. The
// menu takes the keyboard.
class X11HotKeyStorm : public InputFixture, public testing::Test {
  protected:
    X11HotKeyStorm() {
        EXPECT_TRUE(comesToFront(target));
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

    void expectToReachNobodyElse(int press) {
        EXPECT_TRUE(waitForWindowManager(mainQueue));
        if (other.tryToGrabWholeKeyboard()) {
            other.releaseWholeKeyboard();
        } else {
            ADD_FAILURE() << "press " << press << " has opened a menu";
            user->tap(X11User::escapeKey);
        }
    }
    void switchLayout(int press) {
        constexpr std::array layouts{"de", "us", "us,ru", "fr"};
        setLayout({layouts[static_cast<std::size_t>(press) % layouts.size()]});
    }
    void changeMap(int press) { user->setSymbol(X11User::pauseKey, press % 2 == 0 ? 'x' : 'y'); }
    // The presses come at different times after the text.
    void expectToLoseNoTextAfterText(int holds, std::chrono::milliseconds minDelay,
                                     std::chrono::milliseconds maxDelay) {
        std::mt19937 random(1);
        std::uniform_int_distribution<int> delay(static_cast<int>(minDelay.count()),
                                                 static_cast<int>(maxDelay.count()));
        std::string text;
        for (int press = 0; press < holds; ++press) {
            text += "żж" + std::to_string(press);
            type("żж" + std::to_string(press), target.process());
            ASSERT_TRUE(becomes(target, text));
            mainQueue.runFor(std::chrono::milliseconds(delay(random)));
            recorder.events.clear();
            pressHold();
            EXPECT_TRUE(becomes(recorder, "P1")) << "press " << press;
            mainQueue.runFor(60ms);
            text += "ęд ";
            type("ęд ", target.process());
            ASSERT_TRUE(becomes(target, text)) << "press " << press;
            releaseHold();
            EXPECT_TRUE(becomes(recorder, "P1R1")) << "press " << press;
            expectToReachNobodyElse(press);
        }
    }

    const X11Target target{X11Target::Kind::terminal, mainQueue};
    X11User other;
    HotKeyRecorder recorder{input->eventManager()};
};

TEST_F(X11HotKeyStorm, HearsEveryPressAfterASwitchOfTheLayout) {
    for (int press = 0; press < 40; ++press) {
        switchLayout(press);
        waitAfterChange(press);
        expectToBeHeard(press);
        expectToReachNobodyElse(press);
    }
    EXPECT_EQ(target.text(), "");
}

TEST_F(X11HotKeyStorm, HearsEveryPressAfterAChangeOfTheMap) {
    for (int press = 0; press < 80; ++press) {
        changeMap(press);
        waitAfterChange(press);
        expectToBeHeard(press);
        expectToReachNobodyElse(press);
    }
    user->setSymbol(X11User::pauseKey, XKB_KEY_Pause);
    EXPECT_EQ(target.text(), "");
}

TEST_F(X11HotKeyStorm, HearsEveryPressWhileOthersGrabTheKeyboard) {
    for (int press = 0; press < 80; ++press) {
        const bool isGrabbed = press % 2 == 0 && other.tryToGrabWholeKeyboard();
        if (press % 8 == 0) {
            changeMap(press / 8);
        }
        waitAfterChange(press);
        expectToBeHeard(press);
        if (isGrabbed) {
            other.releaseWholeKeyboard();
        }
        expectToReachNobodyElse(press);
    }
    user->setSymbol(X11User::pauseKey, XKB_KEY_Pause);
    EXPECT_EQ(target.text(), "");
}

// Remapped keys are restored some time after a text, which is one more change of the map.
TEST_F(X11HotKeyStorm, LosesNoTextInHoldsAfterTypedText) {
    expectToLoseNoTextAfterText(12, 600ms, 800ms);
}

using X11HotKeySoak = X11HotKeyStorm;

TEST_F(X11HotKeySoak, HearsOneThousandPresses) {
    for (int press = 0; press < 1000; ++press) {
        bool isGrabbed = false;
        switch (press % 4) {
            case 0:
                switchLayout(press / 4);
                break;
            case 1:
                changeMap(press / 4);
                break;
            case 2:
                isGrabbed = other.tryToGrabWholeKeyboard();
                break;
            default:
                break;
        }
        waitAfterChange(press / 4);
        expectToBeHeard(press);
        if (isGrabbed) {
            other.releaseWholeKeyboard();
        }
        expectToReachNobodyElse(press);
    }
    user->setSymbol(X11User::pauseKey, XKB_KEY_Pause);
    EXPECT_EQ(target.text(), "");
}

TEST_F(X11HotKeySoak, LosesNoTextInHoldsAfterTypedText) {
    expectToLoseNoTextAfterText(200, 0ms, 1500ms);
}

}  // namespace

}  // namespace tarvik::tests
