// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/linux/input/ReconnectionFixture.h"
#include "tests/linux/kwin/KWinUser.h"
#include "tests/linux/kwin/RestartedKWin.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventInternalErr;
using platform::noErr;

// Started before everything that connects to it.
class OwnKWin {
  protected:
    OwnKWin() { kwin.start(); }

    RestartedKWin kwin;
};

class KWinReconnection : private OwnKWin,
                         public ReconnectionFixture<KWinUser>,
                         public testing::Test {
  protected:
    using OwnKWin::kwin;

    std::size_t lossLines() const {
        return log.linesWith("KWin is gone").size() +
               log.linesWith("KWin has ended the connection").size();
    }
};

TEST_F(KWinReconnection, HotkeysAndTypingAreBackWithTheNextKWin) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    pressAndRelease();
    kwin.kill();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
    // The first tries after the loss fail.
    mainQueue.runFor(500ms);
    kwin.start();
    ASSERT_TRUE(logs("KWin is back"));
    EXPECT_EQ(lossLines(), 1U);
    EXPECT_TRUE(mainQueue.runUntil(
        [] { return KWinUser::ownerOf(hold) == "com.tarvik.dictate, alt-space"; }));
    pressAndRelease();
    typeAgain();
    EXPECT_EQ(log.linesWith("KWin is back").size(), 1U);
    EXPECT_EQ(lossLines(), 1U);
}

TEST_F(KWinReconnection, AHoldEndsWhenKWinIsKilled) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    std::optional<KWinUser> user(std::in_place);
    user->press(KWinUser::altKey);
    user->press(KWinUser::spaceKey);
    ASSERT_TRUE(becomes(*recorder, "P1", 10s));
    kwin.kill();
    EXPECT_TRUE(becomes(*recorder, "P1R1", 10s));
}

// The bus tells that KWin is there.
TEST_F(KWinReconnection, AKWinThatAnswersAfterTheFirstSecondIsHeard) {
    recorder.reset();
    input.reset();
    kwin.stop();
    openInput();
    recorder.emplace(input->eventManager());
    EXPECT_EQ(recorder->add(hold, 1), noErr);
    EXPECT_EQ(recorder->add(HotKeyRecorder::toggle, 2), noErr);
    kwin.goOn();
    EXPECT_TRUE(mainQueue.runUntil(
        [] { return KWinUser::ownerOf(hold) == "com.tarvik.dictate, alt-space"; }));
    pressAndRelease();
    typeAgain();
    EXPECT_TRUE(log.linesWith("a hotkey is lost").empty());
}

TEST_F(KWinReconnection, ASessionBusThatAnswersAfterTheFirstSecondIsUsed) {
    recorder.reset();
    input.reset();
    kwin.stopBus();
    openInput();
    recorder.emplace(input->eventManager());
    EXPECT_EQ(log.linesWith("hotkeys by KGlobalAccel: KWin has not answered yet, and is used once "
                            "it does")
                  .size(),
              1U);
    EXPECT_EQ(recorder->add(hold, 1), eventInternalErr);
    kwin.goOnBus();
    ASSERT_TRUE(logs("a hotkey is registered now: Alt+Space"));
    pressAndRelease();
    typeAgain();
}

}  // namespace

}  // namespace tarvik::tests
