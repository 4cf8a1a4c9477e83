// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

constexpr auto keyName = "deepgramApiKey";
constexpr int save = 0;
constexpr int cancel = 1;

class KeyPrompt : public testing::Test {
  protected:
    KeyPrompt() : app(nothingStored()) { app.launchAndSettle(); }

    simulated::SimulatedUserInterface& userInterface() { return app.platform.userInterface(); }
    std::optional<std::string> stored() {
        return app.platform.userDefaults().stringForKey(keyName);
    }

    ApplicationUnderTest app;
};

TEST_F(KeyPrompt, HasItsTextsAndButtons) {
    app.delegate->promptForApiKey();
    ASSERT_EQ(userInterface().alerts.size(), 1U);
    const platform::Alert& alert = userInterface().alerts[0];
    EXPECT_EQ(alert.messageText, "Deepgram API Key");
    EXPECT_EQ(alert.informativeText,
              "Paste your Deepgram API key. It will be stored in the macOS Keychain.");
    EXPECT_EQ(alert.fieldText, "");
    EXPECT_EQ(alert.fieldPlaceholder, "Deepgram API key");
    EXPECT_EQ(alert.fieldWidth, 360);
    EXPECT_EQ(alert.fieldHeight, 24);
    EXPECT_EQ(alert.buttons, std::vector<std::string>({"Save", "Cancel"}));
}

TEST_F(KeyPrompt, ActivatesTheApplicationFirst) {
    app.delegate->promptForApiKey();
    EXPECT_EQ(app.platform.journal().lines(),
              std::vector<std::string>({"activateIgnoringOtherApps", "runModal"}));
}

TEST_F(KeyPrompt, HoldHotkeyWithoutAKeyShowsItAndTheIconStaysIdle) {
    app.pressHold();
    ASSERT_EQ(userInterface().alerts.size(), 1U);
    EXPECT_FALSE(app.isRecording());
    EXPECT_EQ(userInterface().alerts[0].fieldText, "");
}

TEST_F(KeyPrompt, ToggleHotkeyWithoutAKeyShowsItToo) {
    app.tapToggle();
    EXPECT_EQ(userInterface().alerts.size(), 1U);
}

TEST_F(KeyPrompt, ShowsAStoredKeyInClearText) {
    app.platform.userDefaults().setString("secret", keyName);
    app.delegate->promptForApiKey();
    EXPECT_EQ(userInterface().alerts[0].fieldText, "secret");
}

TEST_F(KeyPrompt, SaveStoresTheKeyWithoutSurroundingWhiteSpace) {
    userInterface().answerNextAlert(save, "  secret key\n");
    app.delegate->promptForApiKey();
    EXPECT_EQ(stored(), "secret key");
}

TEST_F(KeyPrompt, SaveTrimsTabsAndLineBreaks) {
    userInterface().answerNextAlert(save, "\t\r\n secret \v\f\r\n");
    app.delegate->promptForApiKey();
    EXPECT_EQ(stored(), "secret");
}

TEST_F(KeyPrompt, OnlyTheNextPressStartsARecording) {
    userInterface().answerNextAlert(save, "secret");
    app.pressHold();
    EXPECT_FALSE(app.isRecording());
    app.pressHold();
    EXPECT_TRUE(app.isRecording());
    EXPECT_EQ(app.sessions(), 1U);
    EXPECT_EQ(app.socket().header("Sec-WebSocket-Protocol"), "token, secret");
}

TEST_F(KeyPrompt, SavingAnEmptyFieldRemovesTheKeySoThatTheNextPressAsksAgain) {
    app.platform.userDefaults().setString("secret", keyName);
    userInterface().answerNextAlert(save, "");
    app.delegate->promptForApiKey();
    EXPECT_FALSE(app.platform.userDefaults().has(keyName));
    app.pressHold();
    EXPECT_EQ(userInterface().alerts.size(), 2U);
}

TEST_F(KeyPrompt, SavingOnlyWhiteSpaceRemovesTheKey) {
    app.platform.userDefaults().setString("secret", keyName);
    userInterface().answerNextAlert(save, " \r\n ");
    app.delegate->promptForApiKey();
    EXPECT_FALSE(app.platform.userDefaults().has(keyName));
}

TEST_F(KeyPrompt, CancelLeavesTheKeyUntouched) {
    app.platform.userDefaults().setString("secret", keyName);
    userInterface().answerNextAlert(cancel, "another");
    app.delegate->promptForApiKey();
    EXPECT_EQ(stored(), "secret");
}

TEST_F(KeyPrompt, ClosingItOtherwiseLeavesTheKeyUntouched) {
    app.platform.userDefaults().setString("secret", keyName);
    userInterface().closeNextAlert("another");
    app.delegate->promptForApiKey();
    EXPECT_EQ(stored(), "secret");
}

TEST_F(KeyPrompt, BlocksOfTheMainQueueRunWhileItIsOpen) {
    bool ranWhileModal = false;
    app.platform.mainQueue().async([&] { ranWhileModal = userInterface().isModal; });
    app.delegate->promptForApiKey();
    EXPECT_TRUE(ranWhileModal);
}

TEST_F(KeyPrompt, HotkeyWhileItIsOpenDoesNothing) {
    int presses = 0;
    userInterface().whileModal = [&](const platform::Alert&) {
        if (++presses == 1) {
            app.pressHold();
        }
    };
    app.pressHold();
    EXPECT_EQ(presses, 1);
    EXPECT_EQ(userInterface().alerts.size(), 1U);
    EXPECT_FALSE(app.isRecording());
}

TEST_F(KeyPrompt, LogsNothing) {
    userInterface().answerNextAlert(save, "secret");
    app.pressHold();
    EXPECT_TRUE(app.logLines().empty());
}

}  // namespace
}  // namespace tarvik
