// SPDX-License-Identifier: MIT

#include <optional>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using AlertConformance = SystemConformance;

platform::Alert keyAlert() {
    return {.messageText = "Deepgram API Key",
            .informativeText = "Paste your Deepgram API key.",
            .fieldText = "stored key",
            .fieldPlaceholder = "Deepgram API key",
            .fieldWidth = 360,
            .fieldHeight = 24,
            .buttons = {"Save", "Cancel"}};
}

TEST_P(AlertConformance, TheFirstButtonOfAnAlertAnswersAThousandWithTheText) {
    world->answerNextAlert(0, "  new key");
    const platform::AlertAnswer answer = world->userInterface().runModal(keyAlert());
    EXPECT_EQ(answer.code, platform::alertFirstButtonReturn);
    EXPECT_EQ(answer.fieldText, "  new key");
}

TEST_P(AlertConformance, TheSecondButtonOfAnAlertAnswersOneMore) {
    world->answerNextAlert(1, "new key");
    EXPECT_EQ(world->userInterface().runModal(keyAlert()).code,
              platform::alertFirstButtonReturn + 1);
}

TEST_P(AlertConformance, BlocksOfTheMainQueueRunWhileAnAlertIsUp) {
    bool isUp = false;
    bool hasRunMeanwhile = false;
    world->mainQueue().async([&] { hasRunMeanwhile = isUp; });
    // The answer takes at least one turn of the loop, so the block runs first.
    world->answerNextAlert(1, "");
    isUp = true;
    world->userInterface().runModal(keyAlert());
    isUp = false;
    EXPECT_TRUE(hasRunMeanwhile);
}

TEST_P(AlertConformance, BlocksRunWhileAnAlertIsUpThatABlockHasOpened) {
    int answered = 0;
    bool hasRunMeanwhile = false;
    world->answerNextAlert(1, "");
    world->mainQueue().async([&] { answered = world->userInterface().runModal(keyAlert()).code; });
    world->mainQueue().async([&] { hasRunMeanwhile = answered == 0; });
    EXPECT_TRUE(world->runUntil([&] { return answered != 0; }));
    EXPECT_TRUE(hasRunMeanwhile);
}

TEST_P(AlertConformance, AnAlertWhileAnotherIsUpCountsAsClosed) {
    std::optional<int> second;
    world->answerNextAlert(1, "");
    world->mainQueue().async([&] { second = world->userInterface().runModal(keyAlert()).code; });
    EXPECT_EQ(world->userInterface().runModal(keyAlert()).code,
              platform::alertFirstButtonReturn + 1);
    EXPECT_EQ(second, 0);
}

INSTANTIATE_TEST_SUITE_P(Worlds, AlertConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
