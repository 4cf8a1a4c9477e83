// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/DesktopInput.h"
#include "platform/linux/gnome/GnomeInput.h"
#include "platform/linux/input/LinuxEventManager.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/gnome/FakeShell.h"
#include "tests/linux/gnome/GnomeEnvironment.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::GnomeInput;
using linuxdesktop::GnomeSettings;
using linuxdesktop::LinuxEventManager;
using platform::eventHotKeyExistsErr;
using platform::eventInternalErr;
using platform::noErr;

/// The input on a session bus of the test's own. IBus is missing.
class GnomeReconnection : protected GnomeEnvironment, public testing::Test {
  protected:
    // In GNOME's first settings, the menu of windows has the other hotkey.
    static constexpr auto toggle = HotKeyRecorder::toggle;

    bool isBack() {
        return mainQueue.runUntil([&] { return input->isAvailable(); });
    }
    bool isLost() {
        return mainQueue.runUntil([&] { return !input->isAvailable(); });
    }
    bool hears(const std::string& events) {
        const bool holds = mainQueue.runUntil([&] { return recorder->events == events; });
        EXPECT_EQ(recorder->events, events);
        return holds;
    }

    PrivateBus bus;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<FakeShell> shell{std::in_place};
    std::shared_ptr<LinuxEventManager> manager = std::make_shared<LinuxEventManager>(log);
    std::unique_ptr<GnomeInput> input =
        std::make_unique<GnomeInput>(mainQueue, log, manager, GnomeInput::Front());
    std::optional<HotKeyRecorder> recorder;

    // Settings of this process alone.
    GnomeReconnection() : GnomeEnvironment("memory") {
        manager->setMeans(input.get());
        recorder.emplace(*manager);
    }
};

TEST_F(GnomeReconnection, ASessionWithoutGnomeShellIsARefusal) {
    shell.reset();
    EXPECT_EQ(GnomeInput(mainQueue, log, manager, {}).refusal(), "no GNOME Shell in this session");
}

TEST_F(GnomeReconnection, AGnomeShellThatComesBackIsUsedAgain) {
    ASSERT_TRUE(input->isAvailable());
    shell.reset();
    ASSERT_TRUE(isLost());
    // The connection to the bus is there before GNOME Shell is.
    mainQueue.runFor(500ms);
    EXPECT_FALSE(input->isAvailable());
    shell.emplace();
    ASSERT_TRUE(isBack());
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"TarvikDictate: GNOME Shell is gone",
                                                     "TarvikDictate: GNOME Shell is back"}));
}

TEST_F(GnomeReconnection, HotkeysAreHeardAgainOnTheNextBus) {
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    bus.kill();
    ASSERT_TRUE(isLost());
    EXPECT_EQ(recorder->add(HotKeyRecorder::hold, 1), eventInternalErr);
    shell.reset();
    bus.start();
    shell.emplace();
    ASSERT_TRUE(isBack());
    ASSERT_TRUE(mainQueue.runUntil([] { return FakeShell::press("toggle"); }));
    EXPECT_TRUE(hears("P2"));
    EXPECT_EQ(log.linesWith("the session bus is lost").size(), 1U);
    EXPECT_EQ(log.linesWith("GNOME Shell is back").size(), 1U);
}

TEST_F(GnomeReconnection, EachHotkeyHasACommandOfItsOwn) {
    GnomeSettings menu("org.gnome.desktop.wm.keybindings");
    menu.set("activate-window-menu", GnomeSettings::Texts{});
    ASSERT_EQ(recorder->add(HotKeyRecorder::hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    ASSERT_TRUE(FakeShell::press("hold"));
    EXPECT_TRUE(hears("P1"));
    ASSERT_TRUE(FakeShell::press("toggle"));
    EXPECT_TRUE(hears("P1R1P2"));
    // The shortcut goes with the application.
    recorder.reset();
    input.reset();
    EXPECT_FALSE(FakeShell::press("hold"));
    menu.reset("activate-window-menu");
}

TEST_F(GnomeReconnection, WithoutAPlaceForTheSocketAHotkeyIsRefused) {
    variables.set("XDG_RUNTIME_DIR", folder / "missing");
    EXPECT_EQ(recorder->add(toggle, 2), eventInternalErr);
    EXPECT_TRUE(log.hasLineWith("no socket at " + folder.path().string() + "/missing/"));
}

TEST_F(GnomeReconnection, ABusThatAnswersAfterTheFirstSecondIsUsed) {
    recorder.reset();
    input.reset();
    bus.stop();
    input = std::make_unique<GnomeInput>(mainQueue, log, manager, GnomeInput::Front());
    manager->setMeans(input.get());
    recorder.emplace(*manager);
    EXPECT_TRUE(log.hasLineWith("TarvikDictate: the session bus does not answer"));
    EXPECT_EQ(recorder->add(toggle, 2), eventInternalErr);
    bus.goOn();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is registered now: Alt+Shift+Space"); }));
    ASSERT_TRUE(FakeShell::press("toggle"));
    EXPECT_TRUE(hears("P2"));
}

// The session might as well be KWin's.
TEST_F(GnomeReconnection, OnABusThatAnswersLateTheDesktopThatIsThereIsUsed) {
    recorder.reset();
    input.reset();
    bus.stop();
    linuxdesktop::DesktopInput desktop(mainQueue, log);
    HotKeyRecorder late(desktop.eventManager());
    EXPECT_TRUE(log.hasLineWith("hotkeys by KGlobalAccel: KWin has not answered yet"));
    EXPECT_TRUE(log.hasLineWith("hotkeys by custom shortcuts of GNOME: GNOME Shell has not"));
    EXPECT_EQ(late.add(toggle, 2), eventInternalErr);
    bus.goOn();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is registered now: Alt+Shift+Space"); }));
    ASSERT_TRUE(FakeShell::press("toggle"));
    EXPECT_TRUE(mainQueue.runUntil([&] { return late.events == "P2"; }));
}

TEST_F(GnomeReconnection, TheMenusShortcutIsHeardAtOnceWhenTheUserAsks) {
    EXPECT_EQ(recorder->add(HotKeyRecorder::hold, 1), eventHotKeyExistsErr);
    ASSERT_TRUE(input->canTakeOver());
    input->takeOver();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is registered now: Alt+Space"); }));
    EXPECT_FALSE(input->canTakeOver());
    ASSERT_TRUE(FakeShell::press("hold"));
    EXPECT_TRUE(hears("P1"));
}

TEST_F(GnomeReconnection, ATextThatIsTypedMeanwhileIsReportedLost) {
    shell.reset();
    ASSERT_TRUE(isLost());
    // The session ends in the next turn of its loop.
    bool isDone = false;
    ASSERT_TRUE(mainQueue.runUntil([&] {
        isDone = false;
        input->type({std::nullopt, U"lost"}, [&] { isDone = true; });
        return mainQueue.runUntil([&] { return isDone; }) &&
               log.hasLineWith("typed text not delivered: GNOME is gone (4 characters)");
    }));
}

}  // namespace

}  // namespace tarvik::tests
