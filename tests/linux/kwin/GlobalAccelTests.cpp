// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>

#include "tests/linux/kwin/GlobalAccelFixture.h"
#include "tests/linux/system/SilentBus.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventHotKeyExistsErr;
using platform::eventInternalErr;
using platform::noErr;

using GlobalAccelTest = GlobalAccelFixture;

TEST_F(GlobalAccelTest, GivesItsKeyToEachHotkeyAndTakesItBack) {
    open();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace},
                            {"alt-shift-space", FakeGlobalAccel::altShiftSpace}}));
    recorder.reset();
    EXPECT_TRUE(fake->actions().empty());
}

TEST_F(GlobalAccelTest, TakesEveryKeyBackAtTheEnd) {
    open();
    EXPECT_EQ(input->registerHotKey(1, platform::spaceKeyCode, hold), noErr);
    EXPECT_EQ(input->registerHotKey(2, platform::spaceKeyCode, toggle), noErr);
    EXPECT_EQ(fake->actions().size(), 2U);
    input.reset();
    EXPECT_TRUE(fake->actions().empty());
}

TEST_F(GlobalAccelTest, CountsARepeatedPressOnce) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    for (int i = 0; i < 5; ++i) {
        fake->press("alt-space");
    }
    EXPECT_TRUE(becomes("P1"));
    fake->release("alt-space");
    fake->release("alt-space");
    EXPECT_TRUE(becomes("P1R1"));
    mainQueue.runFor(50ms);
    EXPECT_EQ(recorder->events, "P1R1");
}

TEST_F(GlobalAccelTest, HearsNothingOfActionsThatItDoesNotHave) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    fake->press("something-else");
    fake->press("alt-shift-space");
    fake->release("alt-space");
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1"));
}

TEST_F(GlobalAccelTest, EndsAHoldWhenTheOtherHotkeyGoesDown) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    fake->press("alt-space");
    fake->press("alt-shift-space");
    EXPECT_TRUE(becomes("P1R1P2"));
    fake->release("alt-space");
    fake->release("alt-shift-space");
    EXPECT_TRUE(becomes("P1R1P2R2"));
}

TEST_F(GlobalAccelTest, NamesWhoHasTheKeyAndLeavesNoActionWithoutOne) {
    fake.reset();
    fake.emplace(true, FakeGlobalAccel::altSpace);
    open();
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_EQ(log.linesWith("KDE has given Alt+Space to: KRunner, Run Command").size(), 1U);
    EXPECT_TRUE(hasActions({{"alt-shift-space", FakeGlobalAccel::altShiftSpace}}));
}

TEST_F(GlobalAccelTest, ANewKDEThatGivesOneKeyToTwoProgramsCountsAsARefusal) {
    fake.reset();
    fake.emplace(true, FakeGlobalAccel::altSpace);
    fake->setManner(FakeGlobalAccel::Manner::sharing);
    open();
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_TRUE(log.hasLineWith("KDE has given Alt+Space to: KRunner, Run Command"));
    EXPECT_TRUE(hasActions({}));
}

TEST_F(GlobalAccelTest, TakesOverWhatAKilledProcessHasLeft) {
    fake->leave("alt-space", FakeGlobalAccel::altSpace);
    fake->leave("alt-shift-space", 'x');
    open();
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace},
                            {"alt-shift-space", FakeGlobalAccel::altShiftSpace}}));
    recorder.reset();
    EXPECT_TRUE(fake->actions().empty());
}

TEST_F(GlobalAccelTest, WaitsNoLongerThanASecondAndRegistersWithABusyKWinLater) {
    open();
    fake->setManner(FakeGlobalAccel::Manner::later);
    EXPECT_LT(timeOf([&] { EXPECT_EQ(recorder->add(hold, 1), noErr); }), second);
    EXPECT_TRUE(fake->actions().empty());
    fake->setManner(FakeGlobalAccel::Manner::properly);
    EXPECT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace}}));
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1"));
}

TEST_F(GlobalAccelTest, TellsOfTheRefusalOfABusyKWin) {
    fake.reset();
    fake.emplace(true, FakeGlobalAccel::altSpace);
    open();
    fake->setManner(FakeGlobalAccel::Manner::later);
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    fake->setManner(FakeGlobalAccel::Manner::properly);
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is lost: another program has the combination"); },
        5s));
    EXPECT_TRUE(log.hasLineWith("KDE has given Alt+Space to: KRunner, Run Command"));
}

TEST_F(GlobalAccelTest, RefusesWhenTheAnswerIsAnError) {
    open();
    fake->setManner(FakeGlobalAccel::Manner::byErrors);
    EXPECT_EQ(recorder->add(hold, 1), eventInternalErr);
}

TEST_F(GlobalAccelTest, EndsTheHoldWhenKWinEndsAndRegistersAgainWithTheNextOne) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1"));
    fake.reset();
    EXPECT_TRUE(becomes("P1R1"));
    fake.emplace();
    ASSERT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace}}));
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1R1P1"));
    EXPECT_EQ(log.linesWith("KWin is gone").size(), 1U);
    EXPECT_EQ(log.linesWith("KWin is back").size(), 1U);
}

TEST_F(GlobalAccelTest, RegistersAgainWhenTheBusIsBackAndThenKWin) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    bus.kill();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->isAvailable(); }));
    fake.reset();
    bus.start();
    // The connection to the bus may be there before KWin is.
    mainQueue.runFor(500ms);
    EXPECT_FALSE(input->isAvailable());
    fake.emplace();
    ASSERT_TRUE(hasActions({{"alt-space", FakeGlobalAccel::altSpace},
                            {"alt-shift-space", FakeGlobalAccel::altShiftSpace}}));
    fake->press("alt-space");
    EXPECT_TRUE(becomes("P1"));
    EXPECT_EQ(log.linesWith("the session bus is gone").size(), 1U);
    EXPECT_EQ(log.linesWith("KWin is back").size(), 1U);
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(GlobalAccelTest, ReportsATextThatIsTypedWhileKWinIsGone) {
    open();
    fake.reset();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->isAvailable(); }));
    bool isDone = false;
    input->type({std::nullopt, U"lost"}, [&] { isDone = true; });
    EXPECT_TRUE(mainQueue.runUntil([&] { return isDone; }));
    EXPECT_EQ(log.linesWith("typed text not delivered: KWin does not answer (4 characters)").size(),
              1U);
}

TEST_F(GlobalAccelTest, TellsOfAKeyThatTheNextKWinHasGivenAway) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    fake.reset();
    fake.emplace(true, FakeGlobalAccel::altSpace);
    EXPECT_TRUE(mainQueue.runUntil(
        [&] {
            return log.hasLineWith(
                "a hotkey is lost: KDE has given Alt+Space to: KRunner, Run Command");
        },
        5s));
}

TEST_F(GlobalAccelTest, TellsOfAKeyThatTheUserHasTakenAway) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    fake->change("alt-space", 'x');
    EXPECT_TRUE(mainQueue.runUntil(
        [&] {
            return log.hasLineWith(
                "a hotkey is lost: Alt+Space was taken away in the settings of KDE's shortcuts");
        },
        5s));
}

TEST_F(GlobalAccelTest, IsRefusedWithoutKWin) {
    fake.reset();
    open();
    EXPECT_EQ(input->refusal(), "there is no KWin on the session bus");
    EXPECT_EQ(input->frontRefusal(), "there is no KWin on the session bus");
    EXPECT_FALSE(input->isAvailable());
}

TEST_F(GlobalAccelTest, IsRefusedWhereAnotherProgramHasTheShortcuts) {
    fake.reset();
    fake.emplace(false);
    FakeGlobalAccel other;
    open();
    EXPECT_EQ(input->refusal(), "KWin does not have the shortcuts of this session");
}

TEST_F(GlobalAccelTest, IsRefusedOnX11WithinASecondByABusThatDoesNotAnswer) {
    const TemporaryFolder folder;
    const SilentBus silent(folder.path() / "bus");
    variables.set("DBUS_SESSION_BUS_ADDRESS", silent.address());
    variables.set("WAYLAND_DISPLAY", "");
    EXPECT_LT(timeOf([&] { open(); }), second);
    EXPECT_EQ(input->refusal(), "the session bus does not answer");
    EXPECT_FALSE(input->isUndecided());
}

TEST_F(GlobalAccelTest, IsUndecidedOnWaylandWithinASecondOnABusThatDoesNotAnswer) {
    const TemporaryFolder folder;
    const SilentBus silent(folder.path() / "bus");
    variables.set("DBUS_SESSION_BUS_ADDRESS", silent.address());
    EXPECT_LT(timeOf([&] { open(); }), second);
    EXPECT_EQ(input->refusal(), std::nullopt);
    EXPECT_TRUE(input->isUndecided());
    EXPECT_FALSE(input->isAvailable());
    EXPECT_EQ(recorder->add(hold, 1), eventInternalErr);
}

TEST_F(GlobalAccelTest, SaysThatTheBusIsGone) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    bus.kill();
    EXPECT_TRUE(mainQueue.runUntil([&] { return log.hasLineWith("the session bus is gone"); }));
    EXPECT_TRUE(mainQueue.runUntil([&] { return !input->isAvailable(); }));
    EXPECT_EQ(recorder->add(toggle, 2), eventInternalErr);
}

}  // namespace

}  // namespace tarvik::tests
