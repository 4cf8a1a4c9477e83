// SPDX-License-Identifier: MIT

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

using MenuConformance = SystemConformance;

platform::MenuItem entry(const std::string& title, std::function<void()> action = {}) {
    platform::MenuItem item;
    item.title = title;
    item.action = std::move(action);
    return item;
}

TEST_P(MenuConformance, TheMenuIsUpdatedRightBeforeItOpensAndNeverDoubled) {
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

TEST_P(MenuConformance, ChoosingAnEntryPerformsItAlsoWhenItReplacesTheMenu) {
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

INSTANTIATE_TEST_SUITE_P(Worlds, MenuConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
