// SPDX-License-Identifier: MIT

#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/conformance/input/InputConformance.h"

namespace tarvik::tests {

namespace {

using platform::eventHotKeyExistsErr;
using platform::noErr;

constexpr auto hold = HotKeyRecorder::hold;
constexpr auto toggle = HotKeyRecorder::toggle;

class EventManagerConformance : public testing::TestWithParam<NamedInputWorld> {
  protected:
    std::unique_ptr<InputWorld> world = GetParam().make();
    HotKeyRecorder recorder{world->eventManager()};

    bool becomes(const std::string& events) {
        return world->runUntil([&] { return recorder.events == events; });
    }
};

TEST_P(EventManagerConformance, ReportsPressAndReleaseOnceEach) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    world->press(hold);
    EXPECT_TRUE(becomes("P1")) << recorder.events;
    world->release(hold);
    EXPECT_TRUE(becomes("P1R1")) << recorder.events;
    world->settle();
    EXPECT_EQ(recorder.events, "P1R1");
}

TEST_P(EventManagerConformance, ReportsEveryPressOfManyInOrder) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    ASSERT_EQ(recorder.add(toggle, 2), noErr);
    std::string expected;
    for (int i = 0; i < 10; ++i) {
        world->press(hold);
        world->release(hold);
        world->press(toggle);
        world->release(toggle);
        expected += "P1R1P2R2";
    }
    EXPECT_TRUE(becomes(expected)) << recorder.events;
}

TEST_P(EventManagerConformance, RefusesACombinationThatAnotherProgramHas) {
    world->take(hold);
    const platform::OSStatus status = recorder.add(hold, 1);
    EXPECT_EQ(recorder.add(toggle, 2), noErr);
    // A desktop that asks its user decides later.
    if (status == noErr) {
        EXPECT_TRUE(world->runUntil([&] { return world->isHotKeyLost(); }));
    } else {
        EXPECT_EQ(status, eventHotKeyExistsErr);
    }
    world->press(toggle);
    world->release(toggle);
    EXPECT_TRUE(becomes("P2R2")) << recorder.events;
}

TEST_P(EventManagerConformance, IsSilentAfterUnregistering) {
    platform::EventHotKeyRef hotKey = nullptr;
    ASSERT_EQ(recorder.add(hold, 1, &hotKey), noErr);
    ASSERT_EQ(recorder.add(toggle, 2), noErr);
    EXPECT_EQ(world->eventManager().unregisterEventHotKey(hotKey), noErr);
    EXPECT_NE(world->eventManager().unregisterEventHotKey(hotKey), noErr);
    world->press(hold);
    world->release(hold);
    world->press(toggle);
    world->release(toggle);
    EXPECT_TRUE(becomes("P2R2")) << recorder.events;
}

TEST_P(EventManagerConformance, RegistersAgainAfterUnregistering) {
    platform::EventHotKeyRef hotKey = nullptr;
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(recorder.add(hold, 1, &hotKey), noErr);
        world->eventManager().unregisterEventHotKey(hotKey);
    }
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    world->press(hold);
    world->release(hold);
    EXPECT_TRUE(becomes("P1R1")) << recorder.events;
}

TEST_P(EventManagerConformance, CallsNoRemovedHandler) {
    ASSERT_EQ(recorder.add(hold, 1), noErr);
    HotKeyRecorder witness(world->eventManager());
    recorder.removeHandler();
    world->press(hold);
    world->release(hold);
    EXPECT_TRUE(world->runUntil([&] { return witness.events == "P1R1"; })) << witness.events;
    EXPECT_EQ(recorder.events, "");
}

INSTANTIATE_TEST_SUITE_P(Worlds, EventManagerConformance, everyInputWorld(), inputWorldName);

}  // namespace

}  // namespace tarvik::tests
