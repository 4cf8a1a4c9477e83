// SPDX-License-Identifier: MIT

#include <signal.h>
#include <stdlib.h>

#include <cstdint>

#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/WindowManager.h"
#include "tests/support/Attempts.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::string_view manyCharacters =
    "ĀāĂăĄąĆćĈĉĊċČčĎďĐđĒēĔĕĖėĘęĚěĜĝĞğĠġĢģĤĥĦħĨĩĪīĬĭĮįİıĲĳĴĵĶķĸĹĺĻļĽľĿŀŁłŃńŅņŇňŉŊŋŌōŎŏŐőŒœ";

class X11Delivery : public InputFixture, public testing::Test {};

TEST_F(X11Delivery, SurvivesLayoutsThatChangeInTheMiddle) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    std::string expected;
    for (const std::string layout : {"us", "ru", "de", "us,ru", "pl"}) {
        setLayout({layout});
        const std::string piece = "Text в " + layout + " ąß漢. ";
        type(piece, target.process());
        expected += piece;
    }
    EXPECT_TRUE(becomes(target, expected));
}

TEST_F(X11Delivery, WritesMoreDifferentCharactersThanThereAreSpareKeys) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    type(manyCharacters, target.process());
    EXPECT_TRUE(becomes(target, manyCharacters));
}

// The server drops the press of a key that is down: a pedal's, or a modifier's that the map lacks.
TEST_F(X11Delivery, LendsNoKeyThatTheUserHolds) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    std::uint8_t held = 0xFF;
    while (user->symbol(held) != 0) {
        --held;
    }
    user->press(held);
    type("zażółć ą", target.process());
    EXPECT_TRUE(becomes(target, "zażółć ą"));
}

// The keys of the first text are still remapped, which leaves few for what the second one lacks.
TEST_F(X11Delivery, WritesATextTwiceThatHasMoreDifferentCharactersThanThereAreSpareKeys) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    const std::string text =
        "Müller's café: Привет, мир! Zażółć gęślą jaźń. Ελληνικά, עברית, العربية, 日本語 😀. ";
    type(text, target.process());
    ASSERT_TRUE(becomes(target, text));
    type(text, target.process());
    EXPECT_TRUE(becomes(target, text + text));
}

// The keys of the first text may be remapped only after they were read, whatever came between.
TEST_F(X11Delivery, GoesOnAfterATextWasHeldUpBetweenTwoBursts) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    const std::string burst = std::string(39, 'a') + "q";
    X11User menu;
    menu.haltKeyboardAt(X11User::qKey);
    type(burst + "rest", target.process());
    // The first burst ends with the key that the menu waits for.
    EXPECT_TRUE(becomes(target, burst.substr(0, burst.size() - 1)));
    type(manyCharacters, target.process());
    menu.letKeyboardGoOn(X11User::qKey);
    EXPECT_TRUE(becomes(target, burst + "rest" + std::string(manyCharacters)));
}

TEST_F(X11Delivery, LetsASlowProgramReadBeforeItsKeysAreLentForAnother) {
    const X11Target fast(X11Target::Kind::gtk3Text, mainQueue);
    const X11Target slow(X11Target::Kind::gtk3Text, mainQueue);
    ASSERT_TRUE(comesToFront(slow));
    slow.hang();
    type("ĀāĂăĄąĆć", slow.process());
    type("ĎďĐđĒēĔĕ", fast.process());
    mainQueue.runFor(500ms);
    type("ĜĝĞğĠġĢģĤĥĦħĨĩĪī", fast.process());
    mainQueue.runFor(500ms);
    slow.goOn();
    EXPECT_TRUE(becomes(slow, "ĀāĂăĄąĆć"));
    EXPECT_TRUE(becomes(fast, "ĎďĐđĒēĔĕĜĝĞğĠġĢģĤĥĦħĨĩĪī"));
}

TEST_F(X11Delivery, PutsTheKeyboardMapBack) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    const int spare = user->keysWithoutSymbol();
    ASSERT_GT(spare, 10);
    type("ĄĆĘ", target.process());
    EXPECT_TRUE(becomes(target, "ĄĆĘ"));
    EXPECT_LT(user->keysWithoutSymbol(), spare);
    EXPECT_TRUE(mainQueue.runUntil([&] { return user->keysWithoutSymbol() == spare; }));
    type("ŃŚŹ", target.process());
    EXPECT_TRUE(becomes(target, "ĄĆĘŃŚŹ"));
    input.reset();
    EXPECT_EQ(user->keysWithoutSymbol(), spare);
}

TEST_F(X11Delivery, TypesWhatWasPostedBeforeTheEnd) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    type("Last words: ż", target.process());
    input.reset();
    EXPECT_TRUE(becomes(target, "Last words: ż"));
}

TEST_F(X11Delivery, EndsInTimeAndInOrderWhileAProgramReadsNothing) {
    EXPECT_TRUE(isWithin(1500ms, [this] {
        const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
        EXPECT_TRUE(comesToFront(target));
        const int spare = user->keysWithoutSymbol();
        target.hang();
        type(manyCharacters, target.process());
        const auto start = Clock::now();
        input.reset();
        const auto duration = Clock::now() - start;
        EXPECT_EQ(user->keysWithoutSymbol(), spare);
        EXPECT_TRUE(log.hasLineWith("typed text not delivered: "));
        input.emplace(mainQueue, log);
        return duration;
    }));
}

TEST_F(X11Delivery, TypesNothingForAnEndedProcessAndSaysSo) {
    X11Target gone(X11Target::Kind::gtk3Text, mainQueue);
    const X11Target front(X11Target::Kind::gtk3Text, mainQueue);
    const auto process = gone.process();
    gone.end();
    type("nobody", process);
    EXPECT_TRUE(mainQueue.runUntil([&] {
        return log.hasLineWith("TarvikDictate: typed text not delivered: process " +
                               std::to_string(process) + " has ended (6 characters)");
    }));
    type("x", front.process());
    EXPECT_TRUE(becomes(front, "x"));
}

// A program may be killed while its keys wait for it.
class X11KilledTarget : public InputFixture, public testing::TestWithParam<X11Target::Kind> {};

TEST_P(X11KilledTarget, LeavesALineForTheTextThatItHasNotRead) {
    const X11Target next(X11Target::Kind::gtk3Text, mainQueue);
    X11Target target(GetParam(), mainQueue);
    ASSERT_TRUE(comesToFront(target));
    target.hang();
    type("two ж", target.process());
    // Texts are typed one after another.
    type("x", next.process());
    ASSERT_TRUE(becomes(next, "x"));
    target.end();
    EXPECT_TRUE(mainQueue.runUntil([&] { return log.hasLineWith("not delivered"); }));
    EXPECT_TRUE(
        log.hasLineWith("TarvikDictate: typed text not delivered: its window was closed before its "
                        "program had read it (5 characters)"));
}

INSTANTIATE_TEST_SUITE_P(, X11KilledTarget,
                         testing::Values(X11Target::Kind::gtk3Text, X11Target::Kind::terminal),
                         [](const auto& kind) { return nameOf(kind.param); });

// A program may have several windows.
TEST_F(X11Delivery, ReachesTheWindowThatWasInFrontWhenItWasAskedFor) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    target.openSecondWindow(mainQueue);
    // Only the beginning of a recording moves the target.
    EXPECT_TRUE(mainQueue.runUntil([&] { return input->frontmostProcess() == target.process(); }));
    type("to the first, ąć", target.process());
    EXPECT_TRUE(becomes(target, "to the first, ąć"));
    EXPECT_EQ(target.textOfSecondWindow(), "");
    {
        const X11Target other(X11Target::Kind::gtk3Text, mainQueue);
        ASSERT_TRUE(comesToFront(other));
    }
    ASSERT_TRUE(comesToFront(target));
    type("to the second, ąć", target.process());
    EXPECT_TRUE(
        mainQueue.runUntil([&] { return target.textOfSecondWindow() == "to the second, ąć"; }));
    EXPECT_EQ(target.text(), "to the first, ąć");
}

TEST_F(X11Delivery, ReachesItsWindowWhenTheFocusIsAlreadyInAnotherOneOfTheProgram) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const xcb_window_t first = frontWindow();
    target.openSecondWindow(mainQueue);
    xcb_window_t second = XCB_NONE;
    // No window is in front in between.
    ASSERT_TRUE(mainQueue.runUntil([&] {
        second = frontWindow();
        return second != first && second != XCB_NONE;
    }));
    {
        const X11Target other(X11Target::Kind::gtk3Text, mainQueue);
        ASSERT_TRUE(comesToFront(other));
    }
    ASSERT_TRUE(comesToFront(target));
    ASSERT_EQ(frontWindow(), second);
    {
        // A window manager sets the focus first, and then says which window is in front.
        const StoppedWindowManager busy;
        setFocus(first);
        type("to the second, ąć", target.process());
        EXPECT_TRUE(
            mainQueue.runUntil([&] { return target.textOfSecondWindow() == "to the second, ąć"; }));
    }
    EXPECT_EQ(target.text(), "");
}

TEST_F(X11Delivery, TypesNothingForAProcessWithoutAWindow) {
    const X11Target front(X11Target::Kind::gtk3Text, mainQueue);
    type("nobody", getpid());
    EXPECT_TRUE(
        mainQueue.runUntil([&] { return log.hasLineWith("has no window (6 characters)"); }));
    EXPECT_TRUE(becomes(front, ""));
}

TEST_F(X11Delivery, TypesNothingForWhatIsNoProcess) {
    const X11Target front(X11Target::Kind::gtk3Text, mainQueue);
    for (const platform::ProcessIdentifier process : {0, -1, -getpgrp()}) {
        type("nobody", process);
        EXPECT_TRUE(mainQueue.runUntil([&] {
            return log.hasLineWith("TarvikDictate: typed text not delivered: process " +
                                   std::to_string(process) + " has no window (6 characters)");
        })) << process;
    }
    type("x", front.process());
    EXPECT_TRUE(becomes(front, "x"));
}

TEST_F(X11Delivery, TypesNothingWhileAnotherProgramHasTheKeyboard) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    X11User locker;
    locker.grabWholeKeyboard();
    type("secret", target.process());
    mainQueue.runFor(1500ms);
    EXPECT_EQ(locker.grabbedPresses(), 0);
    EXPECT_EQ(target.text(), "");
    type(" and free", target.process());
    locker.releaseWholeKeyboard();
    EXPECT_TRUE(becomes(target, "secret and free"));
}

// A recording that cannot be ended is worse than a locked screen that is no secret to the hotkey.
TEST_F(X11Delivery, LetsTheHotKeysThroughWhileAnotherProgramHasTheKeyboard) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    ASSERT_EQ(recorder.add(toggle, 2), platform::noErr);
    X11User locker;
    locker.grabWholeKeyboard();
    mainQueue.runFor(1200ms);
    pressHold();
    EXPECT_TRUE(becomes(recorder, "P1"));
    // The server repeats a key after 660 ms.
    mainQueue.runFor(900ms);
    EXPECT_EQ(recorder.events, "P1");
    type("secret", target.process());
    user->release(X11User::altKey);
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    user->release(X11User::spaceKey);
    user->press(X11User::shiftKey);
    pressHold();
    releaseHold();
    user->release(X11User::shiftKey);
    EXPECT_TRUE(becomes(recorder, "P1R1P2R2"));
    EXPECT_EQ(target.text(), "");
    locker.releaseWholeKeyboard();
    EXPECT_TRUE(becomes(target, "secret"));
    pressHold();
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1P2R2P1R1"));
    EXPECT_TRUE(becomes(target, "secret"));
}

TEST_F(X11Delivery, NeverReachesAWindowThatCameToTheFrontMeanwhile) {
    const X11Target first(X11Target::Kind::gtk3Text, mainQueue);
    type("All of this belongs to the first, whatever comes", first.process());
    const X11Target second(X11Target::Kind::gtk3Text, mainQueue);
    type(" and so does this ąćę.", first.process());
    EXPECT_TRUE(
        becomes(first, "All of this belongs to the first, whatever comes and so does this ąćę."));
    EXPECT_TRUE(becomes(second, ""));
}

TEST_F(X11Delivery, MakesOneSpaceOfALineBreakAndDropsOtherControls) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    type("a\nb\r\nc\td\x1B\x08", target.process());
    type("|", target.process());
    EXPECT_TRUE(becomes(target, "a b c d|"));
}

// What the user types meanwhile would go to the wrong window.
TEST_F(X11Delivery, LeavesTheFrontAsItIsAlthoughAProgramBehindReadsNothing) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    const X11Target front(X11Target::Kind::gtk3Text, mainQueue);
    ASSERT_TRUE(comesToFront(front));
    target.hang();
    type("x", target.process());
    // The keys have been typed once the target is known not to have read them.
    mainQueue.runFor(700ms);
    EXPECT_TRUE(comesToFront(front));
    user->tap(X11User::qKey);
    EXPECT_TRUE(becomes(front, "q"));
    target.goOn();
    EXPECT_TRUE(becomes(target, "x"));
}

TEST_F(X11Delivery, FollowsTheFrontWindow) {
    const X11Target first(X11Target::Kind::gtk3Text, mainQueue);
    EXPECT_TRUE(comesToFront(first));
    {
        const X11Target second(X11Target::Kind::terminal, mainQueue);
        EXPECT_TRUE(mainQueue.runUntil([&] {
            const auto process = input->frontmostProcess();
            return process && *process != first.process();
        }));
    }
    EXPECT_TRUE(comesToFront(first));
}

// Its release will never be heard of, and the space bar would be taken for the hotkey for ever.
TEST_F(X11Delivery, ForgetsThatAltIsHeldOnAKeyboardThatGoes) {
    const X11Target target(X11Target::Kind::gtk3Text, mainQueue);
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    pressHold();
    ASSERT_TRUE(becomes(recorder, "P1"));
    type("x", target.process());
    ASSERT_TRUE(becomes(target, "x"));
    user->release(X11User::spaceKey);
    ASSERT_TRUE(becomes(recorder, "P1R1"));
    user->unplug();
    user->plugIn();
    user->tap(X11User::spaceKey);
    EXPECT_TRUE(becomes(target, "x "));
    EXPECT_EQ(recorder.events, "P1R1");
}

TEST_F(X11Delivery, RefusesEverythingWithoutAServer) {
    const std::string display = getenv("DISPLAY");
    setenv("DISPLAY", ":4711", 1);
    const std::size_t linesBefore = log.lines().size();
    linuxdesktop::DesktopInput without(mainQueue, log);
    setenv("DISPLAY", display.c_str(), 1);
    const std::vector<std::string> lines{
        "TarvikDictate: hotkeys not by XInput 2: no X server at :4711",
        "TarvikDictate: nothing in this session serves hotkeys",
        "TarvikDictate: typing not by XTEST: no X server at :4711",
        "TarvikDictate: nothing in this session serves typing",
        "TarvikDictate: the front window not by the X server: no X server at :4711",
        "TarvikDictate: the front window not by AT-SPI: no accessibility service runs",
        "TarvikDictate: nothing in this session serves the front window"};
    EXPECT_EQ(linesWithoutWayland(log, linesBefore), lines);
    EXPECT_FALSE(without.canType());
    EXPECT_FALSE(without.frontmostProcess());
    EXPECT_EQ(without.keyboardEvents().createSource(0), nullptr);
    EXPECT_EQ(without.keyboardEvents().createKeyboardEvent(nullptr, 0, true), nullptr);
    HotKeyRecorder recorder(without.eventManager());
    EXPECT_EQ(recorder.add(hold, 1), platform::eventInternalErr);
}

TEST_F(X11Delivery, EndsAHoldWhenTheServerDies) {
    TestProcess server({"Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24"});
    std::string number;
    ASSERT_TRUE(mainQueue.runUntil([&] {
        server.readOutput(number);
        return number.ends_with("\n");
    }));
    number.pop_back();
    const std::string display = getenv("DISPLAY");
    setenv("DISPLAY", (":" + number).c_str(), 1);
    linuxdesktop::DesktopInput doomed(mainQueue, log);
    X11User doomedUser;
    setenv("DISPLAY", display.c_str(), 1);
    HotKeyRecorder recorder(doomed.eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    doomedUser.press(X11User::altKey);
    doomedUser.press(X11User::spaceKey);
    EXPECT_TRUE(becomes(recorder, "P1"));
    server.kill();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
    EXPECT_TRUE(mainQueue.runUntil([&] { return !doomed.canType(); }));
    EXPECT_TRUE(log.hasLineWith("TarvikDictate: the X server is gone"));
    EXPECT_EQ(recorder.add(toggle, 2), platform::eventInternalErr);
}

}  // namespace

}  // namespace tarvik::tests
