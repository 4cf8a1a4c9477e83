// SPDX-License-Identifier: MIT

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <utility>

#include "tests/linux/input/RandomHolds.h"
#include "tests/linux/sway/SwayFixture.h"
#include "tests/support/Attempts.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventHotKeyExistsErr;
using platform::noErr;

class SwayHotKeys : public SwayFixture, public testing::Test {
  protected:
    std::optional<HotKeyRecorder> recorder{std::in_place, input->eventManager()};

    void restart() {
        recorder.reset();
        input.reset();
        input.emplace(mainQueue, log);
        recorder.emplace(input->eventManager());
    }
    void expectNoBindings() {
        for (const char* combination : {"Mod1+space", "Mod1+Shift+space"}) {
            for (const char* form : {"", "--release "}) {
                const std::string answer = user.run(std::string("unbindsym ") + form + combination);
                EXPECT_NE(answer.find("Could not find binding"), std::string::npos) << answer;
            }
        }
    }
    // Presses and releases the hotkey, which is heard.
    void expectHold(const HotKeyRecorder& hearer) {
        pressHold();
        releaseHold();
        EXPECT_TRUE(becomes(hearer, "P1R1"));
    }
    // Presses the hotkey, which is heard as the first event.
    void beginHold() {
        recorder->events.clear();
        pressHold();
        EXPECT_TRUE(becomes(*recorder, "P1"));
    }
    // How long the end of the hold takes from now on.
    Seconds timeToTheEnd() {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(becomes(*recorder, "P1R1"));
        return std::chrono::steady_clock::now() - start;
    }
    // Holds the hotkey for a time that brings nothing but the press.
    void holdFor(std::chrono::milliseconds time) {
        beginHold();
        mainQueue.runFor(time);
        EXPECT_EQ(recorder->events, "P1");
    }
};

TEST_F(SwayHotKeys, EachChoiceIsOneLineWithItsReason) {
    for (const char* line :
         {"hotkeys by Sway: Sway offers it", "typing by a virtual keyboard in Sway: Sway offers it",
          "the front window by Sway: Sway offers it"}) {
        EXPECT_EQ(log.linesWith(line).size(), 1U) << line;
    }
    EXPECT_EQ(log.lines().size(), 3U);
}

TEST_F(SwayHotKeys, AHoldEndsWithTheSpaceBar) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_TRUE(isWithin(300ms, [this] {
        beginHold();
        user.release(SwayUser::spaceKey);
        const Seconds duration = timeToTheEnd();
        user.release(SwayUser::altKey);
        return duration;
    }));
}

// Sway reports the release only with the space bar's, but the repeats end with Alt.
TEST_F(SwayHotKeys, AHoldEndsSoonAfterAltAlone) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_TRUE(isWithin(500ms, [this] {
        holdFor(800ms);
        user.release(SwayUser::altKey);
        const Seconds duration = timeToTheEnd();
        user.release(SwayUser::spaceKey);
        return duration;
    }));
    mainQueue.runFor(100ms);
    EXPECT_EQ(recorder->events, "P1R1");
}

TEST_F(SwayHotKeys, AShortHoldEndsWhenAltAndThenTheSpaceBarGoUp) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_TRUE(isWithin(300ms, [this] {
        beginHold();
        user.release(SwayUser::altKey);
        user.release(SwayUser::spaceKey);
        return timeToTheEnd();
    }));
}

TEST_F(SwayHotKeys, ALongHoldCountsOnce) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_TRUE(isWithin(300ms, [this] {
        holdFor(1500ms);
        releaseHold();
        return timeToTheEnd();
    }));
    mainQueue.runFor(300ms);
    EXPECT_EQ(recorder->events, "P1R1");
}

// Sway never reports these releases.
TEST_F(SwayHotKeys, AHoldEndsThoughAnotherKeyWasPressedDuringIt) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    for (const std::uint32_t other : {SwayUser::aKey, SwayUser::shiftKey}) {
        recorder->events.clear();
        pressHold();
        EXPECT_TRUE(becomes(*recorder, "P1"));
        user.tap(other);
        releaseHold();
        EXPECT_TRUE(becomes(*recorder, "P1R1"));
    }
}

TEST_F(SwayHotKeys, AHoldOfWhichTheRepeatsEndEndsSoonAfterThem) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_TRUE(isWithin(500ms, [this] {
        holdFor(900ms);
        user.tap(SwayUser::aKey);
        const Seconds duration = timeToTheEnd();
        releaseHold();
        return duration;
    }));
}

TEST_F(SwayHotKeys, AHoldGoesOnWhileAStoppedSwayRepeatsNothing) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    holdFor(900ms);
    const std::string socket = std::getenv("SWAYSOCK");
    // sway-ipc.UID.PID.sock
    const auto end = socket.rfind('.');
    const auto process = std::stoi(socket.substr(socket.rfind('.', end - 1) + 1));
    kill(process, SIGSTOP);
    mainQueue.runFor(700ms);
    kill(process, SIGCONT);
    mainQueue.runFor(700ms);
    EXPECT_EQ(recorder->events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1"));
}

TEST_F(SwayHotKeys, WithoutRepeatsTheNextPressEndsAHoldOfWhichNoReleaseWasReported) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    user.run("input type:keyboard repeat_rate 0");
    holdFor(1500ms);
    releaseHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1"));
    pressHold();
    user.tap(SwayUser::aKey);
    releaseHold();
    mainQueue.runFor(1500ms);
    EXPECT_EQ(recorder->events, "P1R1P1");
    pressHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1P1R1P1"));
    releaseHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1P1R1P1R1"));
    EXPECT_EQ(log.linesWith("the keyboard does not repeat its keys").size(), 1U);
    user.run("input type:keyboard repeat_rate 25");
}

TEST_F(SwayHotKeys, AUsersOwnBindingIsNamedAndLeftAlone) {
    user.configure("set $menu nop own binding\nbindsym Mod1+space $menu");
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_EQ(log.linesWith("Sway's configuration binds Alt+Space to: nop own binding").size(), 1U);
}

TEST_F(SwayHotKeys, ACombinationThatAReloadFreesIsHeardAtOnce) {
    user.configure("bindsym Mod1+space nop own binding");
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    // Still the user's.
    user.configure("# nothing");
    user.restoreConfiguration();
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is registered now: Alt+Space"); }));
    expectHold(*recorder);
    EXPECT_EQ(log.linesWith("Sway's configuration binds").size(), 1U);
}

TEST_F(SwayHotKeys, AReloadOfSwayTakesNothing) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    user.configure("# nothing");
    mainQueue.runFor(100ms);
    expectHold(*recorder);
    EXPECT_TRUE(log.linesWith("a hotkey is lost").empty());
}

TEST_F(SwayHotKeys, ABindingThatAReloadBringsIsNamedAndLeftAlone) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    user.configure("bindsym Mod1+space nop own");
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return log.hasLineWith(
            "a hotkey is lost: Sway's configuration binds Alt+Space to: nop own");
    }));
    pressHold();
    releaseHold();
    mainQueue.runFor(100ms);
    EXPECT_EQ(recorder->events, "");
    recorder.reset();
    const std::string answer = user.run("unbindsym Mod1+space");
    EXPECT_EQ(answer.find("Could not find binding"), std::string::npos) << answer;
}

TEST_F(SwayHotKeys, TheBindingsAreGoneAtTheEnd) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    recorder.reset();
    input.reset();
    expectNoBindings();
    input.emplace(mainQueue, log);
}

// The application lives on for a while when it restarts during a recording.
TEST_F(SwayHotKeys, AnotherInstanceHasTheHotkeysOnceTheFirstHasUnregisteredThem) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    recorder.reset();
    linuxdesktop::DesktopInput second(mainQueue, log);
    HotKeyRecorder other(second.eventManager());
    EXPECT_EQ(other.add(hold, 1), noErr);
    EXPECT_EQ(other.add(toggle, 2), noErr);
    expectHold(other);
}

TEST_F(SwayHotKeys, AHotkeyThatTheUserHasKeepsNoOtherInstanceAway) {
    user.configure("bindsym Mod1+space nop own binding");
    ASSERT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    linuxdesktop::DesktopInput second(mainQueue, log);
    HotKeyRecorder other(second.eventManager());
    EXPECT_EQ(other.add(toggle, 2), noErr);
}

TEST_F(SwayHotKeys, AnotherInstanceIsRefusedWhileTheFirstHasBindings) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    linuxdesktop::DesktopInput second(mainQueue, log);
    {
        HotKeyRecorder other(second.eventManager());
        EXPECT_EQ(other.add(hold, 1), eventHotKeyExistsErr);
        EXPECT_EQ(log.linesWith("another instance has bindings in this Sway session").size(), 1U);
    }
    expectHold(*recorder);
}

enum class Step { nothing, oneHotkey, bothHotkeys, hold, oneUnregistered, allUnregistered };

class SwayHotKeysOfAKilledInstance : public SwayHotKeys, public testing::WithParamInterface<Step> {
  protected:
    // Goes as far as `step`, in a process of its own.
    static void killAt(Step step) {
        RealTimeQueue queue;
        RecordingLog ownLog;
        linuxdesktop::DesktopInput killed(queue, ownLog);
        HotKeyRecorder events(killed.eventManager());
        platform::EventHotKeyRef first = nullptr;
        platform::EventHotKeyRef second = nullptr;
        bool isThere = true;
        if (step >= Step::oneHotkey) {
            isThere = events.add(hold, 1, &first) == noErr;
        }
        if (step >= Step::bothHotkeys) {
            isThere = isThere && events.add(toggle, 2, &second) == noErr;
        }
        SwayUser ownUser;
        if (step == Step::hold) {
            ownUser.press(SwayUser::altKey);
            ownUser.press(SwayUser::spaceKey);
            isThere = isThere && queue.runUntil([&] { return events.events == "P1"; });
        }
        if (step >= Step::oneUnregistered) {
            isThere = isThere && events.remove(first) == noErr;
        }
        if (step == Step::allUnregistered) {
            isThere = isThere && events.remove(second) == noErr;
        }
        if (isThere) {
            kill(getpid(), SIGKILL);
        }
        _exit(1);
    }
};

TEST_P(SwayHotKeysOfAKilledInstance, LeaveNothingBehindLongerThanUntilTheNextStart) {
    recorder.reset();
    input.reset();
    const pid_t child = fork();
    if (child == 0) {
        killAt(GetParam());
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    restart();
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    expectHold(*recorder);
    recorder.reset();
    expectNoBindings();
}

INSTANTIATE_TEST_SUITE_P(Steps, SwayHotKeysOfAKilledInstance,
                         testing::Values(Step::nothing, Step::oneHotkey, Step::bothHotkeys,
                                         Step::hold, Step::oneUnregistered, Step::allUnregistered));

TEST_F(SwayHotKeys, APressIsHeardAtOnce) {
    expectPressesHeardAtOnce(*recorder);
}

class SwayHolds : public RandomHolds<SwayHotKeys> {
  protected:
    void SetUp() override { user.run("input type:keyboard repeat_delay 100"); }
    void TearDown() override { user.run("input type:keyboard repeat_delay 600"); }
};

TEST_F(SwayHolds, EveryHoldEndsInWhicheverOrderKeysGoUp) {
    holdOften(40, 3s);
}

TEST_F(SwayHolds, SoakOfManyHolds) {
    holdOften(1000, 3s);
    EXPECT_EQ(delays.size(), 1000U);
    EXPECT_LE(delays.back(), 300ms);
}

}  // namespace

}  // namespace tarvik::tests
