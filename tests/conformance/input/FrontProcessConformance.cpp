// SPDX-License-Identifier: MIT

#include <thread>

#include "tests/conformance/input/InputConformance.h"

namespace tarvik::tests {

namespace {

using Program = InputWorld::Program;

class FrontProcessConformance : public testing::TestWithParam<NamedInputWorld> {
  protected:
    std::unique_ptr<InputWorld> world = GetParam().make();

    bool comesToFront(Program program) {
        return world->runUntil(
            [&] { return world->frontmostProcess() == world->processOf(program); });
    }
};

TEST_P(FrontProcessConformance, IsNoneWhileNoProgramHasAWindow) {
    EXPECT_TRUE(world->runUntil([&] { return !world->frontmostProcess(); }));
}

TEST_P(FrontProcessConformance, IsTheProgramWhoseWindowHasTheKeyboard) {
    world->startPrograms();
    EXPECT_TRUE(comesToFront(Program::second));
}

TEST_P(FrontProcessConformance, FollowsTheKeyboardToAnotherProgram) {
    world->startPrograms();
    ASSERT_TRUE(comesToFront(Program::second));
    world->endSecondProgram();
    EXPECT_TRUE(comesToFront(Program::first));
}

TEST_P(FrontProcessConformance, IsKnownOnOtherThreads) {
    world->startPrograms();
    ASSERT_TRUE(comesToFront(Program::second));
    std::optional<platform::ProcessIdentifier> front;
    std::thread([&] { front = world->frontmostProcess(); }).join();
    EXPECT_EQ(front, world->processOf(Program::second));
}

INSTANTIATE_TEST_SUITE_P(Worlds, FrontProcessConformance, everyInputWorld(), inputWorldName);

}  // namespace

}  // namespace tarvik::tests
