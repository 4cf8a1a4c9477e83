// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "hotkeys/ToggleHotkey.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

constexpr std::uint32_t hold = 1;
constexpr std::uint32_t toggle = 2;
constexpr std::uint32_t option = 2048;
constexpr std::uint32_t optionShift = 2560;
constexpr std::uint32_t space = 49;
constexpr std::uint32_t pressed = 5;
constexpr std::uint32_t released = 6;

class Hotkeys : public testing::Test {
  protected:
    Hotkeys()
        : hotkeys(std::make_shared<ToggleHotkey>(platform.eventManager(), platform.mainQueue(),
                                                 platform.log())) {
        hotkeys->onPress = [this] { calls.push_back("press"); };
        hotkeys->onRelease = [this] { calls.push_back("release"); };
        hotkeys->onToggle = [this] { calls.push_back("toggle"); };
    }

    simulated::SimulatedEventManager& events() { return platform.eventManager(); }

    simulated::SimulatedPlatform platform;
    Lines calls;
    std::shared_ptr<ToggleHotkey> hotkeys;
};

TEST_F(Hotkeys, ConstructionRegistersNothing) {
    EXPECT_TRUE(platform.journal().lines().empty());
}

TEST_F(Hotkeys, StartInstallsTheHandlerAndRegistersBothCombinations) {
    hotkeys->start();
    EXPECT_EQ(platform.journal().lines(),
              Lines({"installEventHandler", "registerEventHotKey 49 2048 TaDi 1 0",
                     "log TarvikDictate: hold-to-talk registered (⌥ Space)",
                     "registerEventHotKey 49 2560 TaDi 2 0",
                     "log TarvikDictate: tap-to-toggle registered (⌥ ⇧ Space)"}));
    EXPECT_EQ(events().targetRequests, 3);
    EXPECT_EQ(events().lastUserData(), hotkeys.get());
}

TEST_F(Hotkeys, HandlerIsInstalledForPressedAndReleasedKeyboardEvents) {
    hotkeys->start();
    const auto& types = events().lastTypes();
    ASSERT_EQ(types.size(), 2U);
    EXPECT_EQ(types[0].eventClass, 0x6B657962U);
    EXPECT_EQ(types[0].eventKind, pressed);
    EXPECT_EQ(types[1].eventClass, 0x6B657962U);
    EXPECT_EQ(types[1].eventKind, released);
}

TEST_F(Hotkeys, EachPressAndEachReleaseOfTheHoldHotkeyCallsOnce) {
    hotkeys->start();
    events().press(space, option);
    events().press(space, option);
    events().release(space, option);
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"press", "press", "release"}));
}

TEST_F(Hotkeys, PressAndReleaseOfTheToggleHotkeyIsOneToggle) {
    hotkeys->start();
    EXPECT_EQ(events().press(space, optionShift), platform::noErr);
    EXPECT_EQ(events().release(space, optionShift), platform::noErr);
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"toggle"}));
}

TEST_F(Hotkeys, CallbacksComeInOrderOnTheMainThreadAfterTheHandlerHasReturned) {
    hotkeys->onPress = [this] {
        EXPECT_TRUE(platform.time().isRunningBlock());
        calls.push_back("press");
    };
    hotkeys->start();
    EXPECT_EQ(events().press(hold), platform::noErr);
    EXPECT_EQ(events().release(hold), platform::noErr);
    EXPECT_EQ(events().press(toggle), platform::noErr);
    EXPECT_TRUE(calls.empty());
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"press", "release", "toggle"}));
}

TEST_F(Hotkeys, EventWithAnotherNumberCallsNothingButIsHandled) {
    hotkeys->start();
    for (const std::uint32_t kind : {pressed, released}) {
        for (const std::uint32_t id : {0U, 3U, 4711U}) {
            EXPECT_EQ(events().sendEvent(kind, platform::EventHotKeyID{0, id}), platform::noErr);
        }
    }
    platform.runUntilIdle();
    EXPECT_TRUE(calls.empty());
}

TEST_F(Hotkeys, SignatureOfTheIdentifierIsIgnored) {
    hotkeys->start();
    events().sendEvent(pressed, platform::EventHotKeyID{0x12345678, hold});
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"press"}));
}

TEST_F(Hotkeys, FailedInstallationIsLoggedAndNothingIsRegistered) {
    events().installStatus = -9868;
    hotkeys->start();
    EXPECT_EQ(platform.log().lines(), Lines({"TarvikDictate: InstallEventHandler failed: -9868"}));
    EXPECT_EQ(platform.journal().linesWithPrefix("registerEventHotKey").size(), 0U);
    hotkeys->stop();
    EXPECT_EQ(platform.journal().count("removeEventHandler"), 0U);
}

TEST_F(Hotkeys, TakenHoldCombinationIsLoggedAndTheToggleHotkeyWorks) {
    events().take(space, option);
    hotkeys->start();
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: hold register failed: -9878",
                     "TarvikDictate: tap-to-toggle registered (⌥ ⇧ Space)"}));
    events().press(space, optionShift);
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"toggle"}));
}

TEST_F(Hotkeys, TakenToggleCombinationIsLoggedAndTheHoldHotkeyWorks) {
    events().take(space, optionShift);
    hotkeys->start();
    EXPECT_EQ(platform.log().lines(), Lines({"TarvikDictate: hold-to-talk registered (⌥ Space)",
                                             "TarvikDictate: toggle register failed: -9878"}));
    events().press(space, option);
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"press"}));
}

TEST_F(Hotkeys, SuccessWithoutAHandleIsAFailureWithStatusZero) {
    events().idsWithoutHandle = {hold, toggle};
    hotkeys->start();
    EXPECT_EQ(platform.log().lines(), Lines({"TarvikDictate: hold register failed: 0",
                                             "TarvikDictate: toggle register failed: 0"}));
    hotkeys->stop();
    EXPECT_TRUE(platform.journal().linesWithPrefix("unregisterEventHotKey").empty());
}

TEST_F(Hotkeys, HandleOfAFailedRegistrationIsNotKept) {
    events().registerStatus = {{hold, -9879}, {toggle, -50}};
    hotkeys->start();
    EXPECT_EQ(platform.log().lines(), Lines({"TarvikDictate: hold register failed: -9879",
                                             "TarvikDictate: toggle register failed: -50"}));
    hotkeys->stop();
    EXPECT_TRUE(platform.journal().linesWithPrefix("unregisterEventHotKey").empty());
}

TEST_F(Hotkeys, StopUndoesEverythingInOrderAndLogsNothing) {
    hotkeys->start();
    platform.journal().clear();
    hotkeys->stop();
    EXPECT_EQ(platform.journal().lines(),
              Lines({"unregisterEventHotKey 1", "unregisterEventHotKey 2", "removeEventHandler"}));
    EXPECT_EQ(events().hotKeys(), 0U);
    EXPECT_EQ(events().handlers(), 0U);
}

TEST_F(Hotkeys, StopWithoutAStartDoesNothing) {
    hotkeys->stop();
    EXPECT_TRUE(platform.journal().lines().empty());
    hotkeys->start();
    hotkeys->stop();
    platform.journal().clear();
    hotkeys->stop();
    EXPECT_TRUE(platform.journal().lines().empty());
}

TEST_F(Hotkeys, StartAfterStopRegistersAgain) {
    hotkeys->start();
    hotkeys->stop();
    hotkeys->start();
    EXPECT_EQ(events().hotKeys(), 2U);
    events().press(hold);
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"press"}));
}

TEST_F(Hotkeys, EmptyCallbackIsSkippedWithoutALogLine) {
    hotkeys->onPress = nullptr;
    hotkeys->onRelease = nullptr;
    hotkeys->onToggle = nullptr;
    hotkeys->start();
    platform.log().clear();
    EXPECT_EQ(events().press(hold), platform::noErr);
    EXPECT_EQ(events().release(hold), platform::noErr);
    EXPECT_EQ(events().press(toggle), platform::noErr);
    platform.runUntilIdle();
    EXPECT_TRUE(platform.log().lines().empty());
}

TEST_F(Hotkeys, EventWithoutAReadableIdentifierIsPassedOn) {
    hotkeys->start();
    EXPECT_EQ(events().sendEvent(pressed, std::nullopt), -9874);
    platform.runUntilIdle();
    EXPECT_TRUE(calls.empty());
}

TEST_F(Hotkeys, MissingEventOrUserDataIsPassedOn) {
    hotkeys->start();
    EXPECT_EQ(events().callHandlerWithoutEvent(), -9874);
    EXPECT_EQ(events().callHandlerWithoutUserData(), -9874);
    platform.runUntilIdle();
    EXPECT_TRUE(calls.empty());
}

TEST_F(Hotkeys, WaitingEventHoldsTheObject) {
    hotkeys->start();
    events().press(hold);
    hotkeys.reset();
    platform.runUntilIdle();
    EXPECT_EQ(calls, Lines({"press"}));
}

TEST_F(Hotkeys, DestructionUnregistersNothing) {
    hotkeys->start();
    platform.journal().clear();
    hotkeys.reset();
    EXPECT_TRUE(platform.journal().lines().empty());
    EXPECT_EQ(events().hotKeys(), 2U);
}

}  // namespace
}  // namespace tarvik
