// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "platform/linux/input/LinuxEventManager.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::HotKeyNumber;

/// Answers every registration with `status`.
class FakeHotKeys final : public linuxdesktop::HotKeyMeans {
  public:
    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t /*keyCode*/,
                                      std::uint32_t modifiers) override {
        if (status != platform::eventHotKeyInvalidErr) {
            wanted[number] = modifiers;
        }
        return status;
    }
    void unregisterHotKey(HotKeyNumber number) override { EXPECT_EQ(wanted.erase(number), 1U); }
    void expectLift(std::uint32_t /*modifiers*/) override {}

    HotKeyNumber onlyOne() const {
        EXPECT_EQ(wanted.size(), 1U);
        return wanted.begin()->first;
    }

    platform::OSStatus status = platform::noErr;
    std::map<HotKeyNumber, std::uint32_t> wanted;
};

class LinuxEventManagerTest : public testing::Test {
  protected:
    RecordingLog log;
    FakeHotKeys means;
    linuxdesktop::LinuxEventManager manager{log};
};

TEST_F(LinuxEventManagerTest, RefusesEverythingWithoutAMeans) {
    HotKeyRecorder recorder(manager);
    EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 1), platform::eventInternalErr);
}

TEST_F(LinuxEventManagerTest, HasHandlersOnlyWithAMeans) {
    platform::EventHandlerRef handler = nullptr;
    const auto proc = [](platform::EventHandlerCall*, platform::Event*, void*) {
        return platform::noErr;
    };
    EXPECT_EQ(
        manager.installEventHandler(manager.applicationEventTarget(), proc, {}, nullptr, &handler),
        platform::eventInternalErr);
    manager.setMeans(&means);
    EXPECT_EQ(
        manager.installEventHandler(manager.applicationEventTarget(), proc, {}, nullptr, &handler),
        platform::noErr);
}

// As after a click on "Grant", or when a desktop answers late.
TEST_F(LinuxEventManagerTest, DeliversARefusedHotKeyOnceTheMeansHasIt) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    for (const auto status : {platform::eventHotKeyExistsErr, platform::eventInternalErr}) {
        means.status = status;
        recorder.events.clear();
        EXPECT_EQ(recorder.add(HotKeyRecorder::toggle, 2), status);
        manager.onRegistered(means.onlyOne());
        manager.onPressed(means.onlyOne());
        manager.onReleased(means.onlyOne());
        EXPECT_EQ(recorder.events, "P2R2");
    }
    EXPECT_EQ(log.linesWith("TarvikDictate: a hotkey is registered now: Alt+Shift+Space").size(),
              2U);
}

TEST_F(LinuxEventManagerTest, ANewRegistrationTakesThePlaceOfARefusedOne) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    means.status = platform::eventHotKeyExistsErr;
    recorder.add(HotKeyRecorder::hold, 1);
    const HotKeyNumber refused = means.onlyOne();
    means.status = platform::noErr;
    EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 3), platform::noErr);
    EXPECT_NE(means.onlyOne(), refused);
    manager.onRegistered(refused);
    manager.onPressed(refused);
    manager.onPressed(means.onlyOne());
    EXPECT_EQ(recorder.events, "P3");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(LinuxEventManagerTest, RefusedHotKeysAreWantedAsLongAsSomebodyHears) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    means.status = platform::eventHotKeyExistsErr;
    recorder.add(HotKeyRecorder::hold, 1);
    means.status = platform::noErr;
    recorder.add(HotKeyRecorder::toggle, 2);
    { const HotKeyRecorder other(manager); }
    EXPECT_EQ(means.wanted.size(), 2U);
    recorder.removeHandler();
    EXPECT_EQ(means.wanted.at(means.onlyOne()), HotKeyRecorder::toggle);
}

TEST_F(LinuxEventManagerTest, ForgetsAHotKeyThatTheDesktopCannotHave) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    means.status = platform::eventHotKeyInvalidErr;
    EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 1), platform::eventHotKeyInvalidErr);
    EXPECT_TRUE(means.wanted.empty());
}

TEST_F(LinuxEventManagerTest, PassesTheAnswerOfTheMeansOn) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    for (const auto status : {platform::eventHotKeyExistsErr, platform::eventHotKeyInvalidErr}) {
        means.status = status;
        EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 1), status);
    }
}

TEST_F(LinuxEventManagerTest, GivesAHotKeyBackToTheMeans) {
    manager.setMeans(&means);
    {
        HotKeyRecorder recorder(manager);
        EXPECT_EQ(recorder.add(HotKeyRecorder::toggle, 2), platform::noErr);
        EXPECT_EQ(means.wanted.at(means.onlyOne()), HotKeyRecorder::toggle);
    }
    EXPECT_TRUE(means.wanted.empty());
}

// A desktop that asks its user answers after the registration.
TEST_F(LinuxEventManagerTest, LogsARegistrationThatIsRefusedLaterAndKeepsIt) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    ASSERT_EQ(recorder.add(HotKeyRecorder::hold, 1), platform::noErr);
    manager.onLost(means.onlyOne(), "the user has refused it");
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{"TarvikDictate: a hotkey is lost: the user has refused it"});
    manager.onPressed(means.onlyOne());
    manager.onReleased(means.onlyOne());
    EXPECT_EQ(recorder.events, "P1R1");
}

TEST_F(LinuxEventManagerTest, DropsEventsOfAHotKeyThatIsNotRegisteredAnyMore) {
    manager.setMeans(&means);
    HotKeyRecorder recorder(manager);
    platform::EventHotKeyRef hotKey = nullptr;
    ASSERT_EQ(recorder.add(HotKeyRecorder::hold, 1, &hotKey), platform::noErr);
    const HotKeyNumber number = means.onlyOne();
    manager.unregisterEventHotKey(hotKey);
    manager.onPressed(number);
    manager.onLost(number, "it is too late");
    EXPECT_EQ(recorder.events, "");
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace

}  // namespace tarvik::tests
