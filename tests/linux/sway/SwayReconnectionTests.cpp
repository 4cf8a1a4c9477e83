// SPDX-License-Identifier: MIT

#include <optional>
#include <string>
#include <thread>

#include "tests/linux/input/ReconnectionFixture.h"
#include "tests/linux/sway/RestartedSway.h"
#include "tests/linux/sway/SwayUser.h"
#include "tests/support/TemporaryVariables.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventInternalErr;
using platform::noErr;

// Started before everything that connects to it.
class OwnSway {
  protected:
    OwnSway() { sway.start(); }

    RestartedSway sway;
};

// The person's keyboard ends with Sway too, and is another one at the next Sway.
class SwayReconnection : private OwnSway,
                         public ReconnectionFixture<SwayUser>,
                         public testing::Test {
  protected:
    using OwnSway::sway;
};

TEST_F(SwayReconnection, HotkeysAndTypingAreBackWithTheNextSway) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    pressAndRelease();
    sway.end();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
    sway.start();
    ASSERT_TRUE(logs("Sway is back"));
    pressAndRelease();
    typeAgain();
}

TEST_F(SwayReconnection, AHoldEndsWhenSwayIsKilledAndTheNextOneIsHeard) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    std::optional<SwayUser> user(std::in_place);
    user->press(SwayUser::altKey);
    user->press(SwayUser::spaceKey);
    ASSERT_TRUE(mainQueue.runUntil([&] { return recorder->events == "P1"; }));
    sway.kill();
    user.reset();
    EXPECT_TRUE(mainQueue.runUntil([&] { return recorder->events == "P1R1"; })) << recorder->events;
    recorder->events.clear();
    // The first tries after the loss fail.
    mainQueue.runFor(1s);
    sway.start();
    ASSERT_TRUE(logs("Sway is back"));
    pressAndRelease();
}

TEST_F(SwayReconnection, ASecondLossIsMadeUpForToo) {
    ASSERT_EQ(recorder->add(hold, 1), noErr);
    for (std::size_t loss = 1; loss <= 2; ++loss) {
        sway.end();
        sway.start();
        ASSERT_TRUE(mainQueue.runUntil(
            [&] { return log.linesWith("TarvikDictate: Sway is back").size() == loss; }));
        pressAndRelease();
    }
}

TEST_F(SwayReconnection, AHotkeyThatWasUnregisteredMeanwhileStaysSo) {
    platform::EventHotKeyRef hotKey = nullptr;
    ASSERT_EQ(recorder->add(hold, 1, &hotKey), noErr);
    sway.end();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
    EXPECT_EQ(recorder->add(HotKeyRecorder::toggle, 2), eventInternalErr);
    EXPECT_EQ(recorder->remove(hotKey), noErr);
    sway.start();
    ASSERT_TRUE(logs("Sway is back"));
    SwayUser user;
    const std::string answer = user.run("unbindsym Mod1+space");
    EXPECT_NE(answer.find("Could not find binding"), std::string::npos) << answer;
}

TEST_F(SwayReconnection, ARegistrationDuringWhichSwayDiesIsRefused) {
    sway.stop();
    std::thread killer([this] {
        std::this_thread::sleep_for(100ms);
        sway.kill();
    });
    EXPECT_EQ(recorder->add(hold, 1), eventInternalErr);
    killer.join();
}

TEST_F(SwayReconnection, ASwayThatAnswersAfterTheFirstSecondIsHeard) {
    recorder.reset();
    input.reset();
    sway.stop();
    openInput();
    recorder.emplace(input->eventManager());
    EXPECT_EQ(log.linesWith("TarvikDictate: Sway does not answer").size(), 1U);
    EXPECT_EQ(recorder->add(hold, 1), eventInternalErr);
    EXPECT_EQ(recorder->add(HotKeyRecorder::toggle, 2), eventInternalErr);
    sway.goOn();
    EXPECT_TRUE(logs("TarvikDictate: a hotkey is registered now: Alt+Space"));
    EXPECT_TRUE(logs("TarvikDictate: a hotkey is registered now: Alt+Shift+Space"));
    pressAndRelease();
    typeAgain();
}

// The same Sway, which does not tell its socket while the input is made.
class WaylandReconnection : private OwnSway, public DesktopInputFixture, public testing::Test {
  protected:
    WaylandReconnection() {
        TemporaryVariables variables;
        variables.unset("SWAYSOCK");
        openInput();
    }

    void restart() {
        ASSERT_TRUE(input->canType());
        sway.kill();
        ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
        sway.start();
        ASSERT_TRUE(mainQueue.runUntil([&] { return input->canType(); }));
        EXPECT_EQ(log.linesWith("the Wayland compositor is back").size(), 1U);
    }
};

TEST_F(WaylandReconnection, TypingIsBackWithTheNextCompositor) {
    restart();
    const SwayUser user;
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    type("again", std::nullopt);
    EXPECT_TRUE(becomes(target, "again", 10s));
}

TEST_F(WaylandReconnection, ATextForAWindowOfTheLastCompositorGoesToNoOther) {
    {
        const SwayUser user;
        const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
        type("a", std::nullopt);
        ASSERT_TRUE(becomes(target, "a", 10s));
        // Nobody tells its process.
        EXPECT_EQ(input->chooseTarget(), std::nullopt);
    }
    restart();
    const SwayUser user;
    const X11Target other(X11Target::Kind::gtk3Entry, mainQueue);
    type("lost", std::nullopt);
    EXPECT_TRUE(logs("typed text not delivered: the window is gone (4 characters)"));
    EXPECT_EQ(other.text(), "");
}

}  // namespace

}  // namespace tarvik::tests
