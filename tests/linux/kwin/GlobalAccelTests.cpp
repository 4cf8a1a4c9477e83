// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/input/LinuxEventManager.h"
#include "platform/linux/kwin/KWinInput.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/kwin/FakeGlobalAccel.h"
#include "tests/linux/system/SilentBus.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::KWinInput;
using linuxdesktop::LinuxEventManager;
using platform::eventHotKeyExistsErr;
using platform::eventInternalErr;
using platform::noErr;
using std::chrono::steady_clock;

// The second that the contract allows, and what it takes a busy machine to wake a thread.
constexpr auto second = 1s + 500ms;

/// Hotkeys on a session bus of the test's own, without a compositor.
class GlobalAccelTest : public testing::Test {
  protected:
    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;

    GlobalAccelTest() {
        setenv("WAYLAND_DISPLAY", "/nowhere", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", daemon->readLine().value_or("").c_str(), 1);
        fake.emplace();
    }
    ~GlobalAccelTest() override {
        unsetenv("WAYLAND_DISPLAY");
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    void open() {
        manager = std::make_shared<LinuxEventManager>(log);
        input = std::make_unique<KWinInput>(mainQueue, log, manager);
        manager->setMeans(input.get());
        recorder.emplace(*manager);
    }
    bool becomes(const std::string& events) {
        const bool holds = mainQueue.runUntil([&] { return recorder->events == events; }, 5s);
        EXPECT_EQ(recorder->events, events);
        return holds;
    }
    bool hasActions(const std::map<std::string, std::int32_t>& expected) {
        return mainQueue.runUntil([&] { return fake->actions() == expected; }, 5s);
    }
    template <typename Action>
    static steady_clock::duration timeOf(Action action) {
        const auto start = steady_clock::now();
        action();
        return steady_clock::now() - start;
    }

    std::optional<TestProcess> daemon{
        std::in_place,
        std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                 "--address=unix:tmpdir=/tmp", "--print-address=1"}};
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<FakeGlobalAccel> fake;
    std::shared_ptr<LinuxEventManager> manager;
    std::unique_ptr<KWinInput> input;
    std::optional<HotKeyRecorder> recorder;
};

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

TEST_F(GlobalAccelTest, IsRefusedWithinASecondByABusThatDoesNotAnswer) {
    const TemporaryFolder folder;
    const SilentBus silent(folder.path() / "bus");
    setenv("DBUS_SESSION_BUS_ADDRESS", silent.address().c_str(), 1);
    EXPECT_LT(timeOf([&] { open(); }), second);
    EXPECT_EQ(input->refusal(), "the session bus does not answer");
}

TEST_F(GlobalAccelTest, SaysThatTheBusIsGone) {
    open();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    fake.reset();
    daemon->kill();
    EXPECT_TRUE(mainQueue.runUntil([&] { return log.hasLineWith("the session bus is gone"); }, 5s));
    EXPECT_TRUE(mainQueue.runUntil([&] { return !input->isAvailable(); }, 5s));
    EXPECT_EQ(recorder->add(toggle, 2), eventInternalErr);
}

}  // namespace

}  // namespace tarvik::tests
