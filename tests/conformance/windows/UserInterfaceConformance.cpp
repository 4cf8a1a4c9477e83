#include <optional>
#include <string>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using UserInterfaceConformance = SystemConformance;

platform::MenuItem entry(const std::string& title, std::function<void()> action = {}) {
    platform::MenuItem item;
    item.title = title;
    item.action = std::move(action);
    return item;
}

platform::Alert keyAlert() {
    return {.messageText = "Deepgram API Key",
            .informativeText = "Paste your Deepgram API key.",
            .fieldText = "stored key",
            .fieldPlaceholder = "Deepgram API key",
            .fieldWidth = 360,
            .fieldHeight = 24,
            .buttons = {"Save", "Cancel"}};
}

TEST_P(UserInterfaceConformance, TheTwoSymbolsAreKnown) {
    EXPECT_TRUE(world->userInterface().systemSymbol("mic", "Tarvik Dictate"));
    EXPECT_TRUE(world->userInterface().systemSymbol("mic.fill", "Tarvik Dictate"));
}

TEST_P(UserInterfaceConformance, TheMenuIsUpdatedRightBeforeItOpensAndNeverDoubled) {
    const auto menu = world->userInterface().makeMenu();
    int updates = 0;
    platform::MenuItem separator;
    separator.isSeparator = true;
    menu->setNeedsUpdateHandler([&] {
        ++updates;
        menu->setItems(
            {entry("Fish & Chips " + std::to_string(updates)), separator, entry("Quit")});
    });
    EXPECT_EQ(world->openMenu(*menu), (std::vector<std::string>{"Fish & Chips 1", "", "Quit"}));
    EXPECT_EQ(world->openMenu(*menu), (std::vector<std::string>{"Fish & Chips 2", "", "Quit"}));
    EXPECT_EQ(updates, 2);
}

TEST_P(UserInterfaceConformance, ChoosingAnEntryPerformsItAlsoWhenItReplacesTheMenu) {
    const auto menu = world->userInterface().makeMenu();
    int chosen = 0;
    const auto held = std::make_shared<int>(3);
    platform::MenuItem disabled = entry("Version", [&] { chosen = 100; });
    disabled.isEnabled = false;
    menu->setItems({disabled, entry("Setup…", [&, held] {
                        menu->setItems({});
                        chosen += *held;
                    })});
    EXPECT_FALSE(world->chooseFromMenu(*menu, "Version"));
    EXPECT_TRUE(world->chooseFromMenu(*menu, "Setup…"));
    EXPECT_EQ(chosen, 3);
    EXPECT_FALSE(world->chooseFromMenu(*menu, "Setup…"));
}

TEST_P(UserInterfaceConformance, TheFirstButtonOfAnAlertAnswersAThousandWithTheText) {
    world->answerNextAlert(0, "  new key");
    const platform::AlertAnswer answer = world->userInterface().runModal(keyAlert());
    EXPECT_EQ(answer.code, platform::alertFirstButtonReturn);
    EXPECT_EQ(answer.fieldText, "  new key");
}

TEST_P(UserInterfaceConformance, TheSecondButtonOfAnAlertAnswersOneMore) {
    world->answerNextAlert(1, "new key");
    EXPECT_EQ(world->userInterface().runModal(keyAlert()).code,
              platform::alertFirstButtonReturn + 1);
}

TEST_P(UserInterfaceConformance, BlocksOfTheMainQueueRunWhileAnAlertIsUp) {
    bool isUp = false;
    bool hasRunMeanwhile = false;
    world->mainQueue().async([&] { hasRunMeanwhile = isUp; });
    // Before the answer is on its way nothing but the block can run.
    world->answerNextAlert(1, "");
    isUp = true;
    world->userInterface().runModal(keyAlert());
    isUp = false;
    EXPECT_TRUE(hasRunMeanwhile);
}

TEST_P(UserInterfaceConformance, BlocksRunWhileAnAlertIsUpThatABlockHasOpened) {
    int answered = 0;
    bool hasRunMeanwhile = false;
    world->answerNextAlert(1, "");
    world->mainQueue().async([&] { answered = world->userInterface().runModal(keyAlert()).code; });
    world->mainQueue().async([&] { hasRunMeanwhile = answered == 0; });
    EXPECT_TRUE(world->runUntil([&] { return answered != 0; }));
    EXPECT_TRUE(hasRunMeanwhile);
}

TEST_P(UserInterfaceConformance, AnAlertWhileAnotherIsUpCountsAsClosed) {
    std::optional<int> second;
    world->answerNextAlert(1, "");
    world->mainQueue().async([&] { second = world->userInterface().runModal(keyAlert()).code; });
    EXPECT_EQ(world->userInterface().runModal(keyAlert()).code,
              platform::alertFirstButtonReturn + 1);
    EXPECT_EQ(second, 0);
}

INSTANTIATE_TEST_SUITE_P(Worlds, UserInterfaceConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
