// SPDX-License-Identifier: MIT

#include <optional>
#include <string>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using TaskLauncherConformance = SystemConformance;

TEST_P(TaskLauncherConformance, AProgramGetsItsArgumentsAsTheyAre) {
    const std::vector<std::string> arguments = {"-c", "two words", "$HOME \"quoted\"", "日本"};
    EXPECT_FALSE(world->taskLauncher().launch(world->goodProgram(), arguments));
    EXPECT_TRUE(world->runUntil([&] { return world->wasLaunched(arguments); }));
}

TEST_P(TaskLauncherConformance, AProgramThatIsNotThereIsAnErrorWithAReason) {
    world->refuseLaunch();
    const std::optional<Error> failure = world->taskLauncher().launch(world->missingProgram(), {});
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->localizedDescription.empty());
}

INSTANTIATE_TEST_SUITE_P(Worlds, TaskLauncherConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
