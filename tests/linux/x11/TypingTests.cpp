// SPDX-License-Identifier: MIT

#include <string>
#include <tuple>

#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/KeptTargets.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

constexpr std::string_view manyScripts =
    "Hold: Zażółć gęślą jaźń 日本語 Привет 😀 «Ünïcödé» – “quotes” €£¥!";

class X11Typing : public InputFixture, public testing::TestWithParam<X11Target::Kind> {
  protected:
    static void TearDownTestSuite() { targets.end(); }

    const X11Target& target = targets.ready(GetParam(), mainQueue);

  private:
    inline static KeptTargets targets;
};

TEST_P(X11Typing, WritesManyScripts) {
    ASSERT_TRUE(comesToFront(target));
    type(manyScripts, target.process());
    EXPECT_TRUE(becomes(target, manyScripts));
}

TEST_P(X11Typing, WritesManyPiecesOneAfterTheOther) {
    ASSERT_TRUE(comesToFront(target));
    std::string expected;
    for (const std::string piece :
         {"One", " two; drei — vier.", " ÀÉÎÕÜ", " пять", " 六七八", " 9!"}) {
        type(piece, target.process());
        expected += piece;
        mainQueue.runFor(5ms);
    }
    EXPECT_TRUE(becomes(target, expected));
}

TEST_P(X11Typing, WritesUnderALayoutThatLacksTheCharacters) {
    ASSERT_TRUE(comesToFront(target));
    setLayout({"ru"});
    type("The quick brown fox, да?", target.process());
    EXPECT_TRUE(becomes(target, "The quick brown fox, да?"));
}

TEST_P(X11Typing, WritesAfterASwitchOfTheLayout) {
    ASSERT_TRUE(comesToFront(target));
    type("Now ąę", target.process());
    EXPECT_TRUE(becomes(target, "Now ąę"));
    setLayout({"fr"});
    type(" and azerty (1,2)", target.process());
    EXPECT_TRUE(becomes(target, "Now ąę and azerty (1,2)"));
}

TEST_P(X11Typing, WritesDuringAHoldAtOnceAndNeverAsAShortcut) {
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    const int spare = user->keysWithoutSymbol();
    pressHold();
    ASSERT_TRUE(becomes(recorder, "P1"));
    type("Hold: file quit Żó 日本 😀!", target.process());
    EXPECT_TRUE(becomes(target, "Hold: file quit Żó 日本 😀!"));
    EXPECT_EQ(recorder.events, "P1");
    mainQueue.runFor(900ms);
    type(" More.", target.process());
    EXPECT_TRUE(becomes(target, "Hold: file quit Żó 日本 😀! More."));
    EXPECT_EQ(recorder.events, "P1");
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    EXPECT_TRUE(target.isRunning());
    EXPECT_TRUE(mainQueue.runUntil([&] { return user->keysWithoutSymbol() == spare; }));
    // A busy window manager is overtaken by then at the latest.
    mainQueue.runFor(650ms);
    pressHold();
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1P1R1"));
    EXPECT_TRUE(becomes(target, "Hold: file quit Żó 日本 😀! More."));
}

TEST_P(X11Typing, WritesWhileTheHeldKeyRepeats) {
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    pressHold();
    mainQueue.runFor(900ms);
    type("a b C", target.process());
    EXPECT_TRUE(becomes(target, "a b C"));
    EXPECT_EQ(recorder.events, "P1");
    user->release(X11User::altKey);
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    user->release(X11User::spaceKey);
    mainQueue.runFor(100ms);
    EXPECT_TRUE(becomes(target, "a b C"));
}

TEST_P(X11Typing, IsNotChangedByLockKeysAndLeavesThemOn) {
    ASSERT_TRUE(comesToFront(target));
    user->lock(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    type("Caps ął 12", target.process());
    EXPECT_TRUE(becomes(target, "Caps ął 12"));
    EXPECT_TRUE(user->isLocked(XCB_MOD_MASK_LOCK));
    EXPECT_TRUE(user->isLocked(XCB_MOD_MASK_2));
}

TEST_P(X11Typing, ReachesAWindowBehindAndLeavesTheFrontAsItIs) {
    ASSERT_TRUE(comesToFront(target));
    const X11Target front(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(front));
    type("Behind: Ω", target.process());
    EXPECT_TRUE(becomes(target, "Behind: Ω"));
    EXPECT_TRUE(comesToFront(front));
    type("In front", front.process());
    EXPECT_TRUE(becomes(front, "In front"));
    EXPECT_TRUE(becomes(target, "Behind: Ω"));
}

TEST_P(X11Typing, LeavesTheUserTheirOwnKeysWhileItReachesAWindowBehind) {
    ASSERT_TRUE(comesToFront(target));
    const X11Target front(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(front));
    std::string dictated;
    std::string typed;
    for (int piece = 0; piece < 12; ++piece) {
        const std::string text = "piece ß" + std::to_string(piece) + " ";
        type(text, target.process());
        dictated += text;
        for (int key = 0; key < 8; ++key) {
            user->tap(X11User::qKey);
            typed += "q";
            mainQueue.runFor(8ms);
        }
    }
    EXPECT_TRUE(becomes(target, dictated));
    EXPECT_TRUE(becomes(front, typed));
}

// A menu bar that takes the keyboard would take the letters for its menu "File" and for "Quit".
TEST_P(X11Typing, IsStillInTheFieldAfterAHoldWithoutText) {
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    std::string text;
    std::string events;
    // The keyboard would repeat a key that is held for longer than 660 ms.
    for (const auto length : {10ms, 120ms, 900ms}) {
        for (const auto first : {X11User::spaceKey, X11User::altKey}) {
            pressHold();
            EXPECT_TRUE(becomes(recorder, events += "P1"));
            mainQueue.runFor(length);
            user->release(first);
            EXPECT_TRUE(becomes(recorder, events += "R1"));
            user->release(first == X11User::spaceKey ? X11User::altKey : X11User::spaceKey);
            user->tap(X11User::fKey);
            user->tap(X11User::qKey);
            EXPECT_TRUE(becomes(target, text += "fq"));
        }
    }
    EXPECT_TRUE(target.isRunning());
}

// Nobody but the program in front wants a key that is pressed while Alt is still held.
TEST_P(X11Typing, LetsOtherKeysThroughWhileAltIsHeldAfterAHold) {
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    user->release(X11User::spaceKey);
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    user->tap(X11User::spaceKey);
    EXPECT_TRUE(becomes(recorder, "P1R1P1R1"));
    user->tap(X11User::pauseKey);
    user->release(X11User::altKey);
    user->tap(X11User::fKey);
    user->tap(X11User::qKey);
    EXPECT_TRUE(mainQueue.runUntil([&] { return target.text().ends_with("fq"); }));
}

// A menu, for example.
TEST_P(X11Typing, LeavesTheKeyboardToOthersDuringAHold) {
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    X11User other;
    EXPECT_TRUE(other.tryToGrabWholeKeyboard());
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    other.releaseWholeKeyboard();
}

using Kind = X11Target::Kind;

const auto everyKind = testing::Values(Kind::gtk3Entry, Kind::gtk4Text, Kind::qt5Text,
                                       Kind::qt6Entry, Kind::tkText, Kind::terminal);

INSTANTIATE_TEST_SUITE_P(, X11Typing, everyKind,
                         [](const auto& kind) { return nameOf(kind.param); });

// More characters than there are spare keys, so that keys have to be used again.
constexpr std::string_view longText =
    "Müller's café: Привет, мир! Zażółć gęślą jaźń. Ελληνικά, עברית, العربية, 日本語 😀. ";

/// How a program is kept from reading its keys.
enum class Stop { signal, sleep, work };

class X11TypingIntoStoppedProgram : public InputFixture,
                                    public testing::TestWithParam<std::tuple<Kind, Stop, bool>> {
  protected:
    static void TearDownTestSuite() { targets.end(); }

    inline static KeptTargets targets;
};

TEST_P(X11TypingIntoStoppedProgram, ArrivesWholeWhenTheProgramGoesOn) {
    constexpr auto duration = 1600ms;
    const auto [kind, stop, isHeld] = GetParam();
    X11Target& target = targets.ready(kind, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    if (isHeld) {
        ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
        pressHold();
        ASSERT_TRUE(becomes(recorder, "P1"));
    }
    switch (stop) {
        case Stop::signal:
            target.hang();
            break;
        case Stop::sleep:
            target.sleepInMainLoop(duration);
            break;
        case Stop::work:
            target.workInMainLoop(duration);
            break;
    }
    const std::string first = "Müller's café is closed. ";
    type(first, target.process());
    mainQueue.runFor(duration / 2);
    type(longText, target.process());
    mainQueue.runFor(duration / 2);
    target.goOn();
    EXPECT_TRUE(becomes(target, first + std::string(longText)));
    if (isHeld) {
        releaseHold();
        EXPECT_TRUE(becomes(recorder, "P1R1"));
    }
}

std::string nameOfStop(const testing::TestParamInfo<std::tuple<Kind, Stop, bool>>& info) {
    const auto [kind, stop, isHeld] = info.param;
    const std::string how = stop == Stop::signal  ? "BySignal"
                            : stop == Stop::sleep ? "Asleep"
                                                  : "AtWork";
    return nameOf(kind) + how + (isHeld ? "WhileHeld" : "");
}

INSTANTIATE_TEST_SUITE_P(, X11TypingIntoStoppedProgram,
                         testing::Combine(everyKind, testing::Values(Stop::signal),
                                          testing::Bool()),
                         nameOfStop);

// A terminal has no main loop that a test could stop.
INSTANTIATE_TEST_SUITE_P(InMainLoop, X11TypingIntoStoppedProgram,
                         testing::Combine(testing::Values(Kind::gtk3Entry, Kind::gtk4Text,
                                                          Kind::qt5Text, Kind::qt6Entry,
                                                          Kind::tkText),
                                          testing::Values(Stop::sleep, Stop::work),
                                          testing::Bool()),
                         nameOfStop);

TEST_P(X11Typing, HoldsUpNoOtherProgramWhileThisOneIsStopped) {
    ASSERT_TRUE(comesToFront(target));
    target.hang();
    type(longText, target.process());
    const X11Target front(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(front));
    type(longText, front.process());
    EXPECT_TRUE(becomes(front, longText));
    type("more", target.process());
    type("and more", front.process());
    EXPECT_TRUE(becomes(front, std::string(longText) + "and more"));
    target.goOn();
    EXPECT_TRUE(becomes(target, std::string(longText) + "more"));
}

}  // namespace

}  // namespace tarvik::tests
