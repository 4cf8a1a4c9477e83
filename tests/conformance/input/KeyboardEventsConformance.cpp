// SPDX-License-Identifier: MIT

#include <string_view>

#include "tests/conformance/input/InputConformance.h"

namespace tarvik::tests {

namespace {

using Program = InputWorld::Program;

class KeyboardEventsConformance : public testing::TestWithParam<NamedInputWorld> {
  protected:
    std::unique_ptr<InputWorld> world = GetParam().make();

    void SetUp() override { world->startPrograms(); }

    std::shared_ptr<platform::KeyboardEvent> event(bool isDown, std::u16string_view units) {
        auto& keyboard = world->keyboardEvents();
        const auto made = keyboard.createKeyboardEvent(
            keyboard.createSource(platform::eventSourceStateCombinedSession), 0, isDown);
        keyboard.setUnicodeString(*made, units);
        return made;
    }
    void typeInto(Program program, std::u16string_view units) {
        world->keyboardEvents().postToPid(world->processOf(program), event(true, units));
        world->keyboardEvents().postToPid(world->processOf(program), event(false, units));
    }
    testing::AssertionResult becomes(Program program, const std::string& text) {
        if (world->runUntil([&] { return world->textOf(program) == text; })) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << "first program: \"" << world->textOf(Program::first) << "\"\nsecond program: \""
               << world->textOf(Program::second) << "\"\nlog:\n"
               << world->logText();
    }
};

TEST_P(KeyboardEventsConformance, TypesRunsInOrderAndNothingForKeysGoingUp) {
    typeInto(Program::second, u"The quick brown fox ");
    typeInto(Program::second, u"jumps over the lazy ");
    typeInto(Program::second, u"dog, twice (2×).");
    EXPECT_TRUE(
        becomes(Program::second, "The quick brown fox jumps over the lazy dog, twice (2×)."));
    world->settle();
    EXPECT_EQ(world->textOf(Program::second),
              "The quick brown fox jumps over the lazy dog, twice (2×).");
}

TEST_P(KeyboardEventsConformance, JoinsASurrogatePairThatTwoEventsDivide) {
    typeInto(Program::second, u"nineteen characters\xD83D");
    typeInto(Program::second, u"\xDE00!");
    EXPECT_TRUE(becomes(Program::second, "nineteen characters😀!"));
}

TEST_P(KeyboardEventsConformance, TypesNothingForAnEmptyText) {
    typeInto(Program::second, u"");
    typeInto(Program::second, u"a");
    EXPECT_TRUE(becomes(Program::second, "a"));
}

TEST_P(KeyboardEventsConformance, TypesIntoAProcessThatIsNotInFront) {
    typeInto(Program::first, u"for the first");
    EXPECT_TRUE(becomes(Program::first, "for the first"));
    typeInto(Program::second, u"for the second");
    EXPECT_TRUE(becomes(Program::second, "for the second"));
    EXPECT_EQ(world->textOf(Program::first), "for the first");
}

TEST_P(KeyboardEventsConformance, TypesNothingForAProcessThatHasEnded) {
    auto& keyboard = world->keyboardEvents();
    keyboard.postToPid(world->endedProcess(), event(true, u"lost"));
    typeInto(Program::second, u"found");
    EXPECT_TRUE(becomes(Program::second, "found"));
    EXPECT_EQ(world->textOf(Program::first), "");
}

TEST_P(KeyboardEventsConformance, TypesIntoWhateverHasTheKeyboard) {
    world->keyboardEvents().post(platform::hidEventTap, event(true, u"Hello"));
    world->keyboardEvents().post(platform::hidEventTap, event(false, u"Hello"));
    EXPECT_TRUE(becomes(Program::second, "Hello"));
    EXPECT_EQ(world->textOf(Program::first), "");
}

INSTANTIATE_TEST_SUITE_P(Worlds, KeyboardEventsConformance, everyInputWorld(), inputWorldName);

}  // namespace

}  // namespace tarvik::tests
