// SPDX-License-Identifier: MIT

#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "platform/linux/settings/TakenShortcuts.h"
#include "tests/linux/input/RandomHolds.h"
#include "tests/linux/kwin/KWinFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::DesktopInput;
using platform::eventHotKeyExistsErr;
using platform::noErr;

/// Whether another instance gets the hold hotkey after `prepare`. It ends as one that is killed.
template <typename Prepare>
bool holdsWhenKilled(Prepare prepare) {
    constexpr int success = 7;
    const pid_t child = fork();
    if (child == 0) {
        RealTimeQueue queue;
        RecordingLog log;
        DesktopInput killed(queue, log);
        HotKeyRecorder events(killed.eventManager());
        prepare(killed, events, queue);
        _exit(events.add(HotKeyRecorder::hold, 1) == noErr ? success : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status) == success;
}

class KWinHotKeys : public KWinFixture {
  protected:
    std::optional<HotKeyRecorder> recorder{std::in_place, input->eventManager()};
};

TEST_F(KWinHotKeys, EachChoiceIsOneLineWithItsReason) {
    EXPECT_EQ(log.linesWith("hotkeys by KGlobalAccel: KWin offers it").size(), 1U);
    EXPECT_EQ(log.linesWith("the front window by KWin: KWin offers it").size(), 1U);
}

TEST_F(KWinHotKeys, AHoldEndsWithTheSpaceBar) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    pressHold();
    EXPECT_TRUE(becomes(*recorder, "P1"));
    user.release(KWinUser::spaceKey);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
    user.release(KWinUser::altKey);
}

TEST_F(KWinHotKeys, AHoldEndsWithAlt) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    pressHold();
    EXPECT_TRUE(becomes(*recorder, "P1"));
    user.release(KWinUser::altKey);
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
    user.release(KWinUser::spaceKey);
    mainQueue.runFor(100ms);
    EXPECT_EQ(recorder->events, "P1R1");
}

TEST_F(KWinHotKeys, ALongHoldCountsOnce) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    pressHold();
    mainQueue.runFor(1500ms);
    EXPECT_EQ(recorder->events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1", 300ms));
    mainQueue.runFor(300ms);
    EXPECT_EQ(recorder->events, "P1R1");
}

TEST_F(KWinHotKeys, AnotherProgramsShortcutIsNamedAndLeftAlone) {
    user.take(hold);
    EXPECT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_EQ(log.linesWith("KDE has given Alt+Space to: Other Program, Launch").size(), 1U);
    EXPECT_EQ(KWinUser::ownerOf(hold), "other.program, launch-2048");
}

/// The user has agreed to nothing yet.
class KWinForeignShortcuts : public KWinHotKeys {
  protected:
    KWinForeignShortcuts() { removeNote(); }
    ~KWinForeignShortcuts() override {
        recorder.reset();
        input.reset();
        removeNote();
    }

  private:
    static void removeNote() { linuxdesktop::TakenShortcuts("kde-shortcuts").remove(); }
};

TEST_F(KWinForeignShortcuts, GoToTheUserWhoAsksAndGoBack) {
    user.take(hold);
    ASSERT_EQ(recorder->add(hold, 1), eventHotKeyExistsErr);
    EXPECT_TRUE(input->canTakeOverHotKeys());
    input->takeOverHotKeys();
    EXPECT_TRUE(mainQueue.runUntil([&] { return !input->canTakeOverHotKeys(); }));
    EXPECT_EQ(log.linesWith("Other Program, Launch has given Alt+Space up").size(), 1U);
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("a hotkey is registered now: Alt+Space"); }));
    EXPECT_EQ(KWinUser::ownerOf(hold), "com.tarvik.dictate, alt-space");
    pressHold();
    releaseHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1"));
    // The end of the application, and its next start.
    recorder.reset();
    input.reset();
    EXPECT_EQ(KWinUser::ownerOf(hold), "other.program, launch-2048");
    input.emplace(mainQueue, log);
    recorder.emplace(input->eventManager());
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(KWinUser::ownerOf(hold), "com.tarvik.dictate, alt-space");
    recorder.reset();
    input.reset();
    EXPECT_EQ(KWinUser::ownerOf(hold), "other.program, launch-2048");
}

TEST_F(KWinForeignShortcuts, OfAKilledInstanceGoBackAfterTheNextOne) {
    user.take(hold);
    recorder.reset();
    input.reset();
    ASSERT_TRUE(
        holdsWhenKilled([](DesktopInput& killed, HotKeyRecorder& events, RealTimeQueue& queue) {
            events.add(hold, 1);
            killed.takeOverHotKeys();
            queue.runUntil([&] { return !killed.canTakeOverHotKeys(); });
        }));
    EXPECT_EQ(KWinUser::ownerOf(hold), "com.tarvik.dictate, alt-space");
    input.emplace(mainQueue, log);
    recorder.emplace(input->eventManager());
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    recorder.reset();
    input.reset();
    EXPECT_EQ(KWinUser::ownerOf(hold), "other.program, launch-2048");
}

TEST_F(KWinHotKeys, TheShortcutsAreGoneAtTheEnd) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    ASSERT_EQ(recorder->add(toggle, 2), noErr);
    EXPECT_EQ(KWinUser::ownerOf(hold), "com.tarvik.dictate, alt-space");
    EXPECT_EQ(KWinUser::ownerOf(toggle), "com.tarvik.dictate, alt-shift-space");
    recorder.reset();
    EXPECT_EQ(KWinUser::ownerOf(hold), "");
    EXPECT_EQ(KWinUser::ownerOf(toggle), "");
}

TEST_F(KWinHotKeys, WhatAKilledInstanceLeavesIsTakenOver) {
    recorder.reset();
    input.reset();
    ASSERT_TRUE(holdsWhenKilled([](DesktopInput&, HotKeyRecorder&, RealTimeQueue&) {}));
    EXPECT_EQ(KWinUser::ownerOf(hold), "com.tarvik.dictate, alt-space");
    input.emplace(mainQueue, log);
    KWinUser::ownerOf(hold);
    recorder.emplace(input->eventManager());
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    pressHold();
    releaseHold();
    EXPECT_TRUE(becomes(*recorder, "P1R1"));
    recorder.reset();
    EXPECT_EQ(KWinUser::ownerOf(hold), "");
}

TEST_F(KWinHotKeys, APressIsHeardAtOnce) {
    expectPressesHeardAtOnce(*recorder);
}

/// Programs with a menu that a lone Alt opens.
class KWinLoneAlt : public KWinHotKeys, public testing::WithParamInterface<X11Target::Kind> {};

TEST_P(KWinLoneAlt, KeepsTheFieldOfAProgramWithAMenu) {
    X11Target target(GetParam(), mainQueue);
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    std::string expected;
    for (int i = 0; i < 4; ++i) {
        recorder->events.clear();
        pressHold();
        ASSERT_TRUE(becomes(*recorder, "P1"));
        if (i % 2 == 0) {
            releaseHold();
        } else {
            user.release(KWinUser::altKey);
            user.release(KWinUser::spaceKey);
        }
        ASSERT_TRUE(becomes(*recorder, "P1R1"));
        user.tap(KWinUser::aKey);
        expected += "a";
        EXPECT_TRUE(mainQueue.runUntil([&] { return target.text() == expected; })) << target.text();
    }
}

INSTANTIATE_TEST_SUITE_P(Toolkits, KWinLoneAlt,
                         testing::Values(X11Target::Kind::gtk3Entry, X11Target::Kind::qt6Entry),
                         [](const auto& kind) { return nameOf(kind.param); });

using KWinHolds = RandomHolds<KWinHotKeys>;

TEST_F(KWinHolds, EveryHoldEndsInWhicheverOrderKeysGoUp) {
    holdOften(40, 300ms);
}

TEST_F(KWinHolds, SoakOfManyHolds) {
    holdOften(1000, 300ms);
}

}  // namespace

}  // namespace tarvik::tests
