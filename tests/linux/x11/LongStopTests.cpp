// SPDX-License-Identifier: MIT

#include <algorithm>
#include <string>
#include <tuple>

#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using StoppedKind = X11Target::Kind;

const auto stoppedKinds =
    testing::Values(StoppedKind::gtk3Entry, StoppedKind::gtk4Text, StoppedKind::qt5Text,
                    StoppedKind::qt6Entry, StoppedKind::tkText, StoppedKind::terminal);

/// Recordings with either hotkey.
class LongStop : public InputFixture {
  protected:
    static constexpr std::string_view firstText = "Müller's café is closed. ";
    // More characters than there are spare keys, so that keys have to be used again.
    static constexpr std::string_view longText =
        "Müller's café: Привет, мир! Zażółć gęślą jaźń. Ελληνικά, עברית, العربية, 日本語 😀. ";

    LongStop() {
        EXPECT_EQ(recorder.add(hold, 1), platform::noErr);
        EXPECT_EQ(recorder.add(toggle, 2), platform::noErr);
    }

    void begin(bool isHeld) {
        if (isHeld) {
            pressHold();
            EXPECT_TRUE(becomes(recorder, events += "P1"));
        } else {
            tapToggle();
        }
    }
    void finish(bool isHeld) {
        if (isHeld) {
            releaseHold();
            EXPECT_TRUE(becomes(recorder, events += "R1"));
        } else {
            tapToggle();
        }
    }
    std::ptrdiff_t lossLines() const {
        return std::ranges::count_if(log.lines(), [](const std::string& line) {
            return line.find("not delivered") != std::string::npos;
        });
    }
    static std::size_t numberOfCharacters(const std::string& text) {
        const auto isFirstByte = [](char byte) { return (byte & 0xC0) != 0x80; };
        return static_cast<std::size_t>(std::ranges::count_if(text, isFirstByte));
    }

    HotKeyRecorder recorder{input->eventManager()};
    std::string events;

  private:
    void tapToggle() {
        user->press(X11User::shiftKey);
        pressHold();
        releaseHold();
        user->release(X11User::shiftKey);
        EXPECT_TRUE(becomes(recorder, events += "P2R2"));
    }
};

class X11StopSoak
    : public LongStop,
      public testing::TestWithParam<std::tuple<StoppedKind, std::chrono::seconds, bool, bool>> {};

TEST_P(X11StopSoak, LosesNothing) {
    const auto [kind, duration, isAsleep, isHeld] = GetParam();
    X11Target target(kind, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    begin(isHeld);
    if (isAsleep) {
        target.sleepInMainLoop(duration);
    } else {
        target.hang();
    }
    std::string expected;
    for (const std::string_view text : {firstText, longText, firstText}) {
        type(text, target.process());
        expected += text;
        mainQueue.runFor(duration / 3);
    }
    target.goOn();
    EXPECT_TRUE(becomes(target, expected));
    finish(isHeld);
    begin(!isHeld);
    type(longText, target.process());
    EXPECT_TRUE(becomes(target, expected + std::string(longText)));
    finish(!isHeld);
    EXPECT_EQ(lossLines(), 0);
}

std::string nameOfLongStop(const testing::TestParamInfo<X11StopSoak::ParamType>& info) {
    const auto [kind, duration, isAsleep, isHeld] = info.param;
    return nameOf(kind) + (isAsleep ? "Asleep" : "") + "For" + std::to_string(duration.count()) +
           "Seconds" + (isHeld ? "WhileHeld" : "");
}

INSTANTIATE_TEST_SUITE_P(BySignal, X11StopSoak,
                         testing::Combine(stoppedKinds, testing::Values(5s, 10s),
                                          testing::Values(false), testing::Bool()),
                         nameOfLongStop);

// A terminal has no main loop that a test could stop.
INSTANTIATE_TEST_SUITE_P(
    InMainLoop, X11StopSoak,
    testing::Combine(testing::Values(StoppedKind::gtk3Entry, StoppedKind::tkText),
                     testing::Values(5s, 10s), testing::Values(true), testing::Bool()),
    nameOfLongStop);

class X11LossSoak : public LongStop,
                    public testing::TestWithParam<std::tuple<StoppedKind, bool>> {};

TEST_P(X11LossSoak, IsOneLineAndTheNextRecordingIsExact) {
    const auto [kind, isHeld] = GetParam();
    const X11Target target(kind, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    begin(isHeld);
    target.hang();
    type(firstText, target.process());
    type(longText, target.process());
    EXPECT_TRUE(mainQueue.runUntil([&] { return lossLines() > 0; }, 35s));
    finish(isHeld);
    mainQueue.runFor(2s);
    EXPECT_EQ(lossLines(), 1);
    EXPECT_TRUE(log.hasLineWith(
        "its program has not answered for 30 s (" +
        std::to_string(numberOfCharacters(std::string(firstText) + std::string(longText))) +
        " characters)"));
    target.goOn();
    mainQueue.runFor(2s);
    const std::string late = target.text();
    EXPECT_TRUE((std::string(firstText) + std::string(longText)).starts_with(late)) << late;
    begin(isHeld);
    type(longText, target.process());
    EXPECT_TRUE(becomes(target, late + std::string(longText)));
    finish(isHeld);
    EXPECT_EQ(lossLines(), 1);
}

INSTANTIATE_TEST_SUITE_P(, X11LossSoak, testing::Combine(stoppedKinds, testing::Bool()),
                         [](const auto& parameters) {
                             return nameOf(std::get<0>(parameters.param)) +
                                    (std::get<1>(parameters.param) ? "WhileHeld" : "");
                         });

}  // namespace

}  // namespace tarvik::tests
