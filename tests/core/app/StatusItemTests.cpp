// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using platform::EditAction;

class StatusItem : public testing::Test {
  protected:
    simulated::SimulatedMenu& menu() { return *app.platform.userInterface().statusItem()->menu; }
    simulated::SimulatedStatusButton& button() {
        return app.platform.userInterface().statusButton();
    }

    ApplicationUnderTest app;
};

TEST_F(StatusItem, MenuHasItsEightEntriesInOrder) {
    app.launch();
    const auto& items = menu().open();
    ASSERT_EQ(items.size(), 8U);
    const std::vector<std::string> titles = {"Tarvik Dictate  v0.1.0",
                                             "Hold ⌥ Space — quick dictation",
                                             "Tap ⌥ ⇧ Space — long-form (tap again to stop)",
                                             "",
                                             "Setup…",
                                             "Restart Tarvik Dictate",
                                             "",
                                             "Quit"};
    const std::vector<std::string> actionNames = {
        "", "", "", "", "openSetupWindow", "restartApp", "", "terminate:"};
    for (std::size_t i = 0; i < items.size(); ++i) {
        EXPECT_EQ(items[i].title, titles[i]);
        EXPECT_EQ(items[i].actionName, actionNames[i]);
        EXPECT_EQ(items[i].isSeparator, i == 3 || i == 6) << i;
        if (!items[i].isSeparator) {
            EXPECT_EQ(items[i].isEnabled, i >= 4) << i;
            EXPECT_EQ(items[i].action != nullptr, i >= 4) << i;
        }
    }
}

TEST_F(StatusItem, MenuIsFilledBeforeItsFirstOpening) {
    app.launch();
    EXPECT_EQ(menu().items.size(), 8U);
}

TEST_F(StatusItem, MenuShowsItsKeyEquivalents) {
    app.launch();
    const auto& items = menu().open();
    EXPECT_EQ(items[0].keyEquivalent, "");
    EXPECT_EQ(items[1].keyEquivalent, "");
    EXPECT_EQ(items[2].keyEquivalent, "");
    EXPECT_EQ(items[4].keyEquivalent, ",");
    EXPECT_EQ(items[4].modifierMask, 0x100000U);
    EXPECT_EQ(items[5].keyEquivalent, "r");
    EXPECT_EQ(items[5].modifierMask, 0x120000U);
    EXPECT_EQ(items[7].keyEquivalent, "q");
    EXPECT_EQ(items[7].modifierMask, 0x100000U);
}

TEST_F(StatusItem, OpeningTheMenuTwiceShowsEightEntriesEachTime) {
    app.launch();
    EXPECT_EQ(menu().open().size(), 8U);
    EXPECT_EQ(menu().open().size(), 8U);
}

TEST_F(StatusItem, MenuReadsTheVersionEachTimeItOpens) {
    app.launch();
    app.platform.bundle().setVersion("0.2.0");
    EXPECT_EQ(menu().open()[0].title, "Tarvik Dictate  v0.2.0");
}

TEST_F(StatusItem, BundleWithoutAVersionShowsAQuestionMark) {
    app.platform.bundle().removeVersion();
    app.launch();
    EXPECT_EQ(menu().open()[0].title, "Tarvik Dictate  v?");
    app.platform.bundle().setVersionThatIsNotText();
    EXPECT_EQ(menu().open()[0].title, "Tarvik Dictate  v?");
}

TEST_F(StatusItem, MenuDoesNotDependOnARecording) {
    app.launch();
    app.pressHold();
    EXPECT_EQ(menu().open().size(), 8U);
    EXPECT_EQ(menu().open()[4].title, "Setup…");
}

TEST_F(StatusItem, SetupOpensTheSetupWindow) {
    app.launchAndSettle();
    const std::size_t before = app.setupWindows().size();
    EXPECT_TRUE(menu().choose("Setup…"));
    EXPECT_EQ(app.setupWindows().size(), before + 1);
}

TEST_F(StatusItem, QuitTerminatesTheApplication) {
    app.launch();
    EXPECT_TRUE(menu().choose("Quit"));
    EXPECT_TRUE(app.platform.application().isTerminated());
    EXPECT_TRUE(app.platform.taskLauncher().launches.empty());
}

TEST_F(StatusItem, HintLinesCannotBeChosen) {
    app.launch();
    EXPECT_FALSE(menu().choose("Tarvik Dictate  v0.1.0"));
    EXPECT_FALSE(menu().choose("Hold ⌥ Space — quick dictation"));
}

TEST_F(StatusItem, IdleIconIsATemplateWithoutATint) {
    app.launch();
    ASSERT_TRUE(button().image);
    EXPECT_EQ(button().image->name, "mic");
    EXPECT_EQ(button().image->description, "Tarvik Dictate");
    EXPECT_EQ(button().image->isTemplate, true);
    EXPECT_EQ(button().tint, std::nullopt);
    EXPECT_EQ(button().title, std::nullopt);
}

TEST_F(StatusItem, IconIsAFilledRedMicrophoneOnlyWhileRecording) {
    app.launch();
    app.pressHold();
    EXPECT_EQ(button().image->name, "mic.fill");
    EXPECT_EQ(button().image->description, "Tarvik Dictate");
    EXPECT_EQ(button().image->isTemplate, false);
    EXPECT_EQ(button().tint, platform::SystemColor::red);
    app.releaseHold();
    EXPECT_EQ(button().image->name, "mic");
    EXPECT_EQ(button().image->isTemplate, true);
    EXPECT_EQ(button().tint, std::nullopt);
}

TEST_F(StatusItem, UnknownSymbolsAreReplacedByText) {
    app.platform.userInterface().unknownSymbols = {"mic", "mic.fill"};
    app.launch();
    EXPECT_EQ(button().title, "○");
    app.pressHold();
    EXPECT_EQ(button().title, "●");
    EXPECT_FALSE(button().image);
    EXPECT_EQ(app.platform.journal().linesWithPrefix("setContentTintColor").size(), 0U);
}

TEST_F(StatusItem, UnknownRecordingSymbolKeepsImageAndTint) {
    app.platform.userInterface().unknownSymbols = {"mic.fill"};
    app.launch();
    app.pressHold();
    EXPECT_EQ(button().title, "●");
    EXPECT_EQ(button().image->name, "mic");
    EXPECT_EQ(button().tint, std::nullopt);
}

TEST_F(StatusItem, WithoutAButtonTheIconIsSkippedAndEverythingElseWorks) {
    app.platform.userInterface().hasStatusButton = false;
    app.launch();
    app.pressHold();
    EXPECT_EQ(app.sessions(), 1U);
    EXPECT_EQ(app.platform.journal().linesWithPrefix("setImage").size(), 0U);
    EXPECT_EQ(app.platform.journal().linesWithPrefix("setTitle").size(), 0U);
    EXPECT_EQ(menu().open().size(), 8U);
}

TEST_F(StatusItem, OnlyOneStatusItemIsMade) {
    app.launch();
    app.pressHold();
    app.releaseHold();
    app.platform.workspace().wake();
    EXPECT_EQ(app.platform.userInterface().statusItemsMade, 1);
    EXPECT_TRUE(app.platform.userInterface().statusItem());
}

TEST_F(StatusItem, MenuUpdateBeforeTheLaunchDoesNothing) {
    app.delegate->menuNeedsUpdate();
    EXPECT_TRUE(app.platform.journal().lines().empty());
}

TEST_F(StatusItem, MainMenuHasTheEditingShortcuts) {
    app.launch();
    ASSERT_EQ(app.platform.userInterface().mainMenus.size(), 1U);
    const auto& [title, items] = app.platform.userInterface().mainMenus[0];
    EXPECT_EQ(title, "Edit");
    const std::vector<std::tuple<std::string, std::optional<EditAction>, std::string>> expected = {
        {"Undo", EditAction::undo, "z"},
        {"Redo", EditAction::redo, "Z"},
        {"", std::nullopt, ""},
        {"Cut", EditAction::cut, "x"},
        {"Copy", EditAction::copy, "c"},
        {"Paste", EditAction::paste, "v"},
        {"Select All", EditAction::selectAll, "a"}};
    ASSERT_EQ(items.size(), expected.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        EXPECT_EQ(std::tuple(items[i].title, items[i].action, items[i].keyEquivalent), expected[i]);
    }
}

}  // namespace
}  // namespace tarvik
