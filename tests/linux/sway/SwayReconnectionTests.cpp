// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <thread>

#include "tests/linux/sway/RestartedSway.h"
#include "tests/linux/sway/SwayFixture.h"

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
class SwayReconnection : private OwnSway, public testing::Test {
  protected:
    static constexpr auto hold = HotKeyRecorder::hold;

    bool logs(const std::string& line) {
        const bool isThere = mainQueue.runUntil([&] { return log.hasLineWith(line); });
        EXPECT_TRUE(isThere) << line;
        return isThere;
    }
    void pressAndRelease() {
        SwayUser user;
        user.press(SwayUser::altKey);
        user.press(SwayUser::spaceKey);
        EXPECT_TRUE(mainQueue.runUntil([&] { return recorder.events == "P1"; }));
        user.release(SwayUser::spaceKey);
        user.release(SwayUser::altKey);
        EXPECT_TRUE(mainQueue.runUntil([&] { return recorder.events == "P1R1"; }))
            << recorder.events;
        recorder.events.clear();
    }

    using OwnSway::sway;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<linuxdesktop::DesktopInput> input{std::in_place, mainQueue, log};
    HotKeyRecorder recorder{input->eventManager()};
};

TEST_F(SwayReconnection, HotkeysAndTypingAreBackWithTheNextSway) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    pressAndRelease();
    sway.end();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
    sway.start();
    ASSERT_TRUE(logs("Sway is back"));
    pressAndRelease();
    const SwayUser user;
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(mainQueue.runUntil([&] { return input->chooseTarget() == target.process(); }));
    const auto event = input->keyboardEvents().createKeyboardEvent(
        input->keyboardEvents().createSource(platform::eventSourceStateCombinedSession), 0, true);
    ASSERT_NE(event, nullptr);
    input->keyboardEvents().setUnicodeString(*event, u"again");
    input->keyboardEvents().postToPid(target.process(), event);
    EXPECT_TRUE(mainQueue.runUntil([&] { return target.text() == "again"; })) << target.text();
}

TEST_F(SwayReconnection, AHoldEndsWhenSwayIsKilledAndTheNextOneIsHeard) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    std::optional<SwayUser> user(std::in_place);
    user->press(SwayUser::altKey);
    user->press(SwayUser::spaceKey);
    ASSERT_TRUE(mainQueue.runUntil([&] { return recorder.events == "P1"; }));
    sway.kill();
    user.reset();
    EXPECT_TRUE(mainQueue.runUntil([&] { return recorder.events == "P1R1"; })) << recorder.events;
    recorder.events.clear();
    // The first tries after the loss fail.
    mainQueue.runFor(1s);
    sway.start();
    ASSERT_TRUE(logs("Sway is back"));
    pressAndRelease();
}

TEST_F(SwayReconnection, ASecondLossIsMadeUpForToo) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
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
    ASSERT_EQ(recorder.add(hold, 1, &hotKey), noErr);
    sway.end();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
    EXPECT_EQ(recorder.add(HotKeyRecorder::toggle, 2), eventInternalErr);
    EXPECT_EQ(recorder.remove(hotKey), noErr);
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
    EXPECT_EQ(recorder.add(hold, 1), eventInternalErr);
    killer.join();
}

// The same Sway, which does not tell its socket while the input is made.
class WaylandReconnection : private OwnSway, public testing::Test {
  protected:
    WaylandReconnection() {
        const std::string socket = std::getenv("SWAYSOCK");
        unsetenv("SWAYSOCK");
        input.emplace(mainQueue, log);
        setenv("SWAYSOCK", socket.c_str(), 1);
    }

    using OwnSway::sway;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<linuxdesktop::DesktopInput> input;
};

TEST_F(WaylandReconnection, TypingIsBackWithTheNextCompositor) {
    ASSERT_TRUE(input->canType());
    sway.kill();
    ASSERT_TRUE(mainQueue.runUntil([&] { return !input->canType(); }));
    sway.start();
    ASSERT_TRUE(mainQueue.runUntil([&] { return input->canType(); }));
    EXPECT_EQ(log.linesWith("the Wayland compositor is back").size(), 1U);
    const SwayUser user;
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    const auto event = input->keyboardEvents().createKeyboardEvent(
        input->keyboardEvents().createSource(platform::eventSourceStateCombinedSession), 0, true);
    ASSERT_NE(event, nullptr);
    input->keyboardEvents().setUnicodeString(*event, u"again");
    input->keyboardEvents().post(platform::hidEventTap, event);
    EXPECT_TRUE(mainQueue.runUntil([&] { return target.text() == "again"; })) << target.text();
}

}  // namespace

}  // namespace tarvik::tests
