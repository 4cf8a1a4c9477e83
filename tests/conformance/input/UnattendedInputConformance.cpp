// SPDX-License-Identifier: MIT

// What input promises without a user at the keyboard and without a program to type into.
#include <array>
#include <string_view>

#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/conformance/input/InputConformance.h"

namespace tarvik::tests {

namespace {

using platform::eventHotKeyExistsErr;
using platform::noErr;

class UnattendedInputConformance : public testing::TestWithParam<NamedInputWorld> {
  protected:
    std::unique_ptr<InputWorld> world = GetParam().make();
};

TEST_P(UnattendedInputConformance, RegistersACombinationOnceUntilItIsUnregistered) {
    HotKeyRecorder recorder(world->eventManager());
    for (int round = 0; round < 3; ++round) {
        platform::EventHotKeyRef hotKey = nullptr;
        ASSERT_EQ(recorder.add(HotKeyRecorder::hold, 1, &hotKey), noErr);
        ASSERT_NE(hotKey, nullptr);
        EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 1), eventHotKeyExistsErr);
        EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 2), eventHotKeyExistsErr);
        EXPECT_EQ(recorder.remove(hotKey), noErr);
    }
    EXPECT_EQ(recorder.events, "");
}

TEST_P(UnattendedInputConformance, RegistersOneCombinationBesideAnother) {
    HotKeyRecorder recorder(world->eventManager());
    EXPECT_EQ(recorder.add(HotKeyRecorder::hold, 1), noErr);
    EXPECT_EQ(recorder.add(HotKeyRecorder::toggle, 2), noErr);
    EXPECT_EQ(recorder.add(HotKeyRecorder::toggle, 1), eventHotKeyExistsErr);
}

TEST_P(UnattendedInputConformance, InstallsAHandlerAndRemovesIt) {
    constexpr std::array types = {
        platform::EventTypeSpec{platform::eventClassKeyboard, platform::eventHotKeyPressed}};
    platform::EventManager& events = world->eventManager();
    for (int round = 0; round < 2; ++round) {
        platform::EventHandlerRef handler = nullptr;
        EXPECT_EQ(events.installEventHandler(
                      events.applicationEventTarget(),
                      [](platform::EventHandlerCall*, platform::Event*, void*) {
                          return platform::eventNotHandledErr;
                      },
                      types, nullptr, &handler),
                  noErr);
        ASSERT_NE(handler, nullptr);
        EXPECT_EQ(events.removeEventHandler(handler), noErr);
    }
}

TEST_P(UnattendedInputConformance, MakesTheEventsOfAFullRunAndPostsThemToNobody) {
    platform::KeyboardEvents& keyboard = world->keyboardEvents();
    const auto source = keyboard.createSource(platform::eventSourceStateCombinedSession);
    ASSERT_TRUE(source);
    for (const bool isDown : {true, false}) {
        const auto event = keyboard.createKeyboardEvent(source, 0, isDown);
        ASSERT_TRUE(event);
        constexpr std::u16string_view fullRun = u"twenty units of text";
        static_assert(fullRun.size() == 20);
        keyboard.setUnicodeString(*event, fullRun);
        keyboard.postToPid(world->endedProcess(), event);
    }
    world->settle();
}

INSTANTIATE_TEST_SUITE_P(Worlds, UnattendedInputConformance, everyInputWorld(), inputWorldName);

}  // namespace

}  // namespace tarvik::tests
