// SPDX-License-Identifier: MIT

#include <algorithm>
#include <random>
#include <vector>

#include "tests/linux/gnome/GnomeFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventHotKeyExistsErr;
using platform::noErr;

class GnomeHotKeyTest : public GnomeFixture, public testing::Test {
  protected:
    std::optional<HotKeyRecorder> recorder{std::in_place, input->eventManager()};
};

TEST_F(GnomeHotKeyTest, EachChoiceIsOneLineWithItsReason) {
    EXPECT_EQ(log.linesWith("hotkeys by custom shortcuts of GNOME: GNOME Shell offers it").size(),
              1U);
    EXPECT_EQ(log.linesWith("typing by an engine of IBus in GNOME: GNOME Shell offers it").size(),
              1U);
}

class GnomeHold : public GnomeHotKeyTest {
  protected:
    void SetUp() override { add(*recorder, hold, 1); }
};

class GnomeHoldInAField : public GnomeHold {
  protected:
    void SetUp() override {
        GnomeHold::SetUp();
        target.emplace(X11Target::Kind::gtk3Entry, mainQueue);
    }

    std::optional<X11Target> target;
};

TEST_F(GnomeHoldInAField, EndsWithTheSpaceBar) {
    press(hold);
    ASSERT_TRUE(becomes(*recorder, "P1"));
    mainQueue.runFor(300ms);
    user.release(GnomeUser::spaceKey);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
    user.release(GnomeUser::altKey);
    EXPECT_TRUE(returnsToLayout());
}

TEST_F(GnomeHoldInAField, EndsWithAlt) {
    press(hold);
    ASSERT_TRUE(becomes(*recorder, "P1"));
    mainQueue.runFor(300ms);
    user.release(GnomeUser::altKey);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
    user.release(GnomeUser::spaceKey);
}

TEST_F(GnomeHoldInAField, CountsOnceHoweverLongItIs) {
    press(hold);
    mainQueue.runFor(2500ms);
    EXPECT_EQ(recorder->events, "P1");
    release(hold);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
    // Repeats that were on their way.
    mainQueue.runFor(1000ms);
    EXPECT_EQ(recorder->events, "P1R1");
    EXPECT_EQ(target->text(), "");
}

TEST_F(GnomeHoldInAField, GoesOnThoughAnotherKeyIsPressed) {
    press(hold);
    mainQueue.runFor(900ms);
    user.tap(GnomeUser::shiftKey);
    mainQueue.runFor(900ms);
    EXPECT_EQ(recorder->events, "P1");
    release(hold);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
}

// The keys may be up before the engine has the field.
TEST_F(GnomeHoldInAField, AShortTapEnds) {
    press(hold);
    release(hold);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 8s));
    EXPECT_TRUE(returnsToLayout());
}

// No engine sees a key there.
TEST_F(GnomeHold, WithoutAFieldEndsWithItsRepeats) {
    press(hold);
    mainQueue.runFor(1800ms);
    EXPECT_EQ(recorder->events, "P1");
    release(hold);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 8s));
    mainQueue.runFor(500ms);
    EXPECT_EQ(recorder->events, "P1R1");
}

TEST_F(GnomeHold, AShortTapWithoutAFieldEnds) {
    press(hold);
    release(hold);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 8s));
}

TEST_F(GnomeHotKeyTest, TheToggleIsAHotkeyOfItsOwn) {
    add(*recorder, hold, 1);
    recorder->events.clear();
    add(*recorder, toggle, 2);
    X11Target target(X11Target::Kind::gtk4Text, mainQueue);
    for (int i = 0; i < 3; ++i) {
        recorder->events.clear();
        press(toggle);
        ASSERT_TRUE(becomes(*recorder, "P2"));
        mainQueue.runFor(150ms);
        release(toggle);
        ASSERT_TRUE(becomes(*recorder, "P2R2"));
    }
    EXPECT_EQ(target.text(), "");
}

TEST_F(GnomeHotKeyTest, GivesItsShortcutsBack) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    recorder.reset();
    input.reset();
    EXPECT_EQ(
        GnomeUser::setting("org.gnome.settings-daemon.plugins.media-keys", "custom-keybindings"),
        "@as []");
    input.emplace(mainQueue, log);
}

TEST_F(GnomeHotKeyTest, ASecondInstanceGetsNoHotkeys) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    linuxdesktop::DesktopInput second(mainQueue, log);
    HotKeyRecorder other(second.eventManager());
    EXPECT_EQ(other.add(hold, 1), eventHotKeyExistsErr);
    EXPECT_EQ(log.linesWith("another instance has shortcuts in this GNOME session").size(), 1U);
}

TEST_F(GnomeHotKeyTest, TheMenuOfWindowsKeepsItsShortcutUntilTheUserAsks) {
    GnomeUser::set(windowSchema, windowMenu, "['<Alt>space']");
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_EQ(log.linesWith("Alt+Space belongs to GNOME's shortcut: the menu of windows "
                            "(activate-window-menu)")
                  .size(),
              1U);
    EXPECT_TRUE(input->canTakeOverHotKeys());
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    input->takeOverHotKeys();
    EXPECT_TRUE(mainQueue.runUntil([&] { return !input->canTakeOverHotKeys(); }));
    EXPECT_EQ(GnomeUser::setting(windowSchema, windowMenu), "@as []");
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is registered now: Alt+Space"); }));
    // GNOME hears of the shortcut a little later.
    EXPECT_TRUE(mainQueue.runUntil([&] {
        press(hold);
        release(hold);
        return mainQueue.runUntil([&] { return recorder->events.starts_with("P1"); }, 3s);
    }));
    // The end of the application, and its next start.
    recorder.reset();
    input.reset();
    EXPECT_EQ(GnomeUser::setting(windowSchema, windowMenu), "['<Alt>space']");
    input.emplace(mainQueue, log);
    recorder.emplace(input->eventManager());
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(GnomeUser::setting(windowSchema, windowMenu), "@as []");
    // The user takes the shortcut back.
    GnomeUser::set(windowSchema, windowMenu, "['<Alt>space']");
    recorder.reset();
    input.reset();
    input.emplace(mainQueue, log);
    recorder.emplace(input->eventManager());
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    GnomeUser::set(windowSchema, windowMenu, "[]");
}

/// Holds during which other keys are pressed, and which end with the keys in any order. A person
/// holds a key for longer than the engine takes to get the field.
class GnomeRandomHolds : public GnomeHoldInAField {
  protected:
    void holdOften(int count) {
        std::mt19937 random(1);
        for (int i = 0; i < count; ++i) {
            recorder->events.clear();
            std::vector<std::uint32_t> others{GnomeUser::aKey, GnomeUser::shiftKey,
                                              GnomeUser::controlKey};
            std::ranges::shuffle(others, random);
            std::vector<std::uint32_t> down{GnomeUser::spaceKey, GnomeUser::altKey};
            press(hold);
            ASSERT_TRUE(becomes(*recorder, "P1")) << i;
            mainQueue.runFor(std::chrono::milliseconds(150 + random() % 700));
            for (std::size_t j = 0, pressed = random() % 3; j < pressed; ++j) {
                user.press(others[j]);
                if (random() % 2 == 0) {
                    user.release(others[j]);
                } else {
                    down.push_back(others[j]);
                }
            }
            std::ranges::shuffle(down, random);
            for (const std::uint32_t key : down) {
                user.release(key);
                if (key == GnomeUser::spaceKey || key == GnomeUser::altKey) {
                    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms)) << i;
                }
            }
            // A repeat that was on its way is no press.
            mainQueue.runFor(500ms);
            ASSERT_EQ(recorder->events, "P1R1") << i;
        }
    }
};

TEST_F(GnomeRandomHolds, EveryHoldEndsInWhicheverOrderKeysGoUp) {
    holdOften(20);
}

TEST_F(GnomeRandomHolds, EveryHoldEndsInWhicheverOrderKeysGoUpSoak) {
    holdOften(1000);
}

TEST_F(GnomeHoldInAField, APressIsHeardAtOnce) {
    using Clock = std::chrono::steady_clock;
    std::vector<Clock::duration> times;
    for (int i = 0; i < 20; ++i) {
        recorder->events.clear();
        user.press(GnomeUser::altKey);
        const auto start = Clock::now();
        user.press(GnomeUser::spaceKey);
        ASSERT_TRUE(becomes(*recorder, "P1"));
        times.push_back(Clock::now() - start);
        mainQueue.runFor(100ms);
        release(hold);
        ASSERT_TRUE(becomes(*recorder, "P1R1", 8s));
    }
    std::ranges::sort(times);
    EXPECT_LT(times[10], 30ms);
    RecordProperty("medianMicroseconds", static_cast<int>(times[10] / 1us));
}

// No engine sees a key there.
TEST_F(GnomeHold, WithoutAFieldASecondTapIsHeard) {
    for (const auto pause : {100ms, 250ms, 600ms, 1200ms}) {
        recorder->events.clear();
        for (int i = 0; i < 2; ++i) {
            press(hold);
            mainQueue.runFor(50ms);
            release(hold);
            mainQueue.runFor(pause);
        }
        EXPECT_TRUE(becomes(*recorder, "P1R1P1R1", 8s)) << pause.count();
    }
}

}  // namespace

}  // namespace tarvik::tests
