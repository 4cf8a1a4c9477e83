// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <filesystem>

#include "tests/linux/portal/PortalFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventHotKeyExistsErr;
using platform::eventHotKeyInvalidErr;
using platform::noErr;

class PortalHotKeyTest : public PortalFixture {
  protected:
    PortalHotKeyTest() {
        open();
        addBoth();
        EXPECT_TRUE(isBound(both));
    }

    // A key repeats five times.
    void repeat(const char* name) {
        for (int i = 0; i < 5; ++i) {
            user.portal()->activate(name);
        }
    }
    bool isSilent() {
        const std::string before = recorder->events;
        mainQueue.runFor(100ms);
        EXPECT_EQ(recorder->events, before);
        return recorder->events == before;
    }
};

TEST_F(PortalHotKeyTest, AsksTheUserOnceForBothHotkeys) {
    EXPECT_EQ(user.portal()->dialogs(), 1);
    EXPECT_EQ(user.portal()->triggers(),
              (std::map<std::string, std::string>{{holdName, "ALT+space"},
                                                  {toggleName, "ALT+SHIFT+space"}}));
    EXPECT_EQ(losses(), 0U);
}

TEST_F(PortalHotKeyTest, TellsOfPressAndRelease) {
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    user.portal()->deactivate(holdName);
    EXPECT_TRUE(becomes("P1R1"));
    user.portal()->activate(toggleName);
    user.portal()->deactivate(toggleName);
    EXPECT_TRUE(becomes("P1R1P2R2"));
}

TEST_F(PortalHotKeyTest, HearsNothingOfOtherShortcutsAndSessions) {
    user.portal()->activateForeign(holdName);
    user.portal()->activate("something-else");
    user.portal()->deactivate(holdName);
    user.portal()->activate(toggleName);
    EXPECT_TRUE(becomes("P2"));
}

TEST_F(PortalHotKeyTest, CountsARepeatedPressOnce) {
    repeat(holdName);
    EXPECT_TRUE(becomes("P1"));
    user.portal()->deactivate(holdName);
    EXPECT_TRUE(becomes("P1R1"));
    EXPECT_TRUE(isSilent());
    EXPECT_FALSE(log.hasLineWith("has not told of a release"));
}

TEST_F(PortalHotKeyTest, EndsAHoldWhenTheOtherHotkeyGoesDown) {
    user.portal()->activate(holdName);
    user.portal()->activate(toggleName);
    EXPECT_TRUE(becomes("P1R1P2"));
    user.portal()->deactivate(holdName);
    user.portal()->deactivate(toggleName);
    EXPECT_TRUE(becomes("P1R1P2R2"));
}

TEST_F(PortalHotKeyTest, AHoldWhoseReleaseThePortalDoesNotTellEndsWithItsRepeats) {
    for (int i = 0; i < 2; ++i) {
        recorder->events.clear();
        repeat(holdName);
        EXPECT_TRUE(becomes("P1R1"));
        mainQueue.runFor(300ms);
    }
    EXPECT_EQ(log.linesWith("has not told of a release").size(), 1U);
}

// On a busy machine a repeat may be too late even for that.
TEST_F(PortalHotKeyTest, ARepeatThatComesTooLateIsNoPress) {
    bool isIgnored = false;
    for (int i = 0; i < 5 && !isIgnored; ++i) {
        recorder->events.clear();
        repeat(holdName);
        ASSERT_TRUE(becomes("P1R1"));
        user.portal()->activate(holdName);
        mainQueue.runFor(100ms);
        isIgnored = recorder->events == "P1R1";
        user.portal()->deactivate(holdName);
        mainQueue.runFor(300ms);
    }
    EXPECT_TRUE(isIgnored);
}

TEST_F(PortalHotKeyTest, AShortHoldEndsWhereThePortalOnceToldOfRepeats) {
    repeat(holdName);
    EXPECT_TRUE(becomes("P1R1"));
    mainQueue.runFor(300ms);
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1R1P1R1"));
}

TEST_F(PortalHotKeyTest, TheNextPressEndsAHoldWithoutReleaseAndRepeats) {
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    mainQueue.runFor(1500ms);
    EXPECT_EQ(recorder->events, "P1");
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1R1"));
}

TEST_F(PortalHotKeyTest, RegisteringTheSameAgainAsksNobody) {
    recorder.reset();
    recorder.emplace(*manager);
    addBoth();
    mainQueue.runFor(200ms);
    EXPECT_EQ(user.portal()->dialogs(), 1);
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
}

TEST_F(PortalHotKeyTest, GivesAHotkeyBack) {
    recorder.reset();
    EXPECT_TRUE(isBound({}));
    recorder.emplace(*manager);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_TRUE(isBound({toggleName}));
}

TEST_F(PortalHotKeyTest, HasOnlyItsOwnCombinationsOnce) {
    EXPECT_EQ(recorder->add(hold, 3), eventHotKeyExistsErr);
    EXPECT_EQ(recorder->add(platform::shiftKeyMask, 3), eventHotKeyInvalidErr);
    EXPECT_EQ(input->registerHotKey(9, platform::spaceKeyCode + 1, hold), eventHotKeyInvalidErr);
}

/// The portal wants to know which application asks.
class PortalRegistrationTest : public PortalFixture {
  protected:
    std::filesystem::path desktopFile() const {
        return user.data() / "applications/com.tarvik.dictate.desktop";
    }
};

TEST_F(PortalRegistrationTest, AProgramWithoutADesktopFileMakesOneForTheTimeOfTheRun) {
    open();
    addBoth();
    ASSERT_TRUE(isBound(both));
    EXPECT_EQ(user.portal()->application(), "com.tarvik.dictate");
    EXPECT_TRUE(std::filesystem::exists(desktopFile()));
    EXPECT_EQ(log.linesWith("no installed desktop file tells the portal of").size(), 1U);
    close();
    EXPECT_FALSE(std::filesystem::exists(desktopFile()));
}

TEST_F(PortalRegistrationTest, GivesEverythingBackAtTheEnd) {
    open();
    ASSERT_EQ(input->registerHotKey(1, platform::spaceKeyCode, hold), noErr);
    ASSERT_TRUE(isBound({holdName}));
    input.reset();
    EXPECT_EQ(user.portal()->closings(), 1);
    EXPECT_TRUE(user.portal()->bound().empty());
}

TEST_F(PortalRegistrationTest, AnInstalledDesktopFileStays) {
    putFile(desktopFile(), "[Desktop Entry]\nName=Installed\n");
    open();
    addBoth();
    ASSERT_TRUE(isBound(both));
    close();
    EXPECT_EQ(contentOf(desktopFile()), "[Desktop Entry]\nName=Installed\n");
    EXPECT_FALSE(log.hasLineWith("no installed desktop file"));
}

TEST_F(PortalRegistrationTest, AnOldPortalNeedsNone) {
    user.portal().reset();
    user.portal().emplace(FakePortal::Options{true, false});
    open();
    addBoth();
    EXPECT_TRUE(isBound(both));
}

TEST_F(PortalRegistrationTest, IsRefusedWithoutAPortal) {
    user.portal().reset();
    open();
    EXPECT_EQ(input->refusal(), "no portal of this session offers global shortcuts");
    EXPECT_EQ(input->registerHotKey(9, platform::spaceKeyCode, hold), platform::eventInternalErr);
}

TEST_F(PortalRegistrationTest, IsRefusedByAPortalWithoutShortcuts) {
    user.portal().reset();
    user.portal().emplace(FakePortal::Options{false, true});
    open();
    EXPECT_EQ(input->refusal(), "no portal of this session offers global shortcuts");
    EXPECT_FALSE(std::filesystem::exists(user.data()));
}

TEST_F(PortalRegistrationTest, IsRefusedOutsideOfWayland) {
    unsetenv("WAYLAND_DISPLAY");
    open();
    EXPECT_EQ(input->refusal(), "WAYLAND_DISPLAY is not set");
}

}  // namespace

}  // namespace tarvik::tests
