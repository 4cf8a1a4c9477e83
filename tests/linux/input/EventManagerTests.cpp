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
    bool isAvailable() const override { return isPresent; }
    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t /*keyCode*/,
                                      std::uint32_t modifiers) override {
        if (status == platform::noErr) {
            registered[number] = modifiers;
        }
        return status;
    }
    void unregisterHotKey(HotKeyNumber number) override { registered.erase(number); }
    void expectLift(std::uint32_t /*modifiers*/) override {}

    HotKeyNumber onlyOne() const { return registered.begin()->first; }

    bool isPresent = true;
    platform::OSStatus status = platform::noErr;
    std::map<HotKeyNumber, std::uint32_t> registered;
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

TEST_F(LinuxEventManagerTest, InstallsNoHandlerWhileTheMeansIsNotAvailable) {
    manager.setMeans(&means);
    means.isPresent = false;
    platform::EventHandlerRef handler = nullptr;
    const auto proc = [](platform::EventHandlerCall*, platform::Event*, void*) {
        return platform::noErr;
    };
    EXPECT_EQ(
        manager.installEventHandler(manager.applicationEventTarget(), proc, {}, nullptr, &handler),
        platform::eventInternalErr);
    means.isPresent = true;
    EXPECT_EQ(
        manager.installEventHandler(manager.applicationEventTarget(), proc, {}, nullptr, &handler),
        platform::noErr);
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
        EXPECT_EQ(means.registered.at(means.onlyOne()), HotKeyRecorder::toggle);
    }
    EXPECT_TRUE(means.registered.empty());
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
