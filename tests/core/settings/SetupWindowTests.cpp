// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "settings/SettingsURLs.h"
#include "settings/SetupWindowController.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

class SetupWindow : public testing::Test {
  protected:
    simulated::SimulatedWindow& window() {
        return *platform.userInterface().window("Tarvik Dictate");
    }
    /// Shows the window and discards what the services have recorded so far.
    void show() {
        SetupWindowController::shared().show();
        platform.runUntilIdle();
        platform.journal().clear();
        platform.log().clear();
    }
    /// The button in the row of a permission.
    std::shared_ptr<simulated::SimulatedButton> grantButton(const std::string& permission) {
        return window().buttons("Grant").at(permission == "Microphone" ? 0 : 1);
    }
    bool shows(const std::string& text, platform::SystemColor color) {
        const auto label = window().label(text);
        return label && label->look.color == platform::Color(color);
    }
    /// The status text after the label with this name.
    std::string statusAfter(const std::string& name) {
        const Lines texts = window().texts();
        const auto found = std::find(texts.begin(), texts.end(), name);
        return found == texts.end() || found + 1 == texts.end() ? "" : *(found + 1);
    }
    void setMicrophone(int status) { platform.captureAuthorization().status = status; }
    Lines openedUrls() { return platform.workspace().openedUrls; }

    simulated::SimulatedPlatform platform;
};

constexpr auto expectedContent =
    "stack vertical, alignment 5, spacing 16, insets 24 28 24 28\n"
    "  stack horizontal, alignment 10, spacing 16\n"
    "    image \"application icon\", scaling 3, width 72, height 72\n"
    "    stack vertical, alignment 5, spacing 2\n"
    "      label \"Tarvik Dictate\", 24 bold, label\n"
    "      label \"Version 0.1.0\", 11 regular, tertiaryLabel\n"
    "  label \"Hold-to-talk dictation that pastes into any app. Three quick steps:\", 13 regular, "
    "secondaryLabel, wraps, at most 640\n"
    "  label \"1.  Click Grant next to Microphone → click Allow on the system prompt.\\n"
    "2.  Click Grant next to Accessibility → click Open System Settings → toggle TarvikDictate ON "
    "→ return here and click Restart.\\n"
    "3.  Get a free Deepgram API key at console.deepgram.com/signup, paste it below, click Save.\\n"
    "\\n"
    "Two ways to dictate from any text field on your Mac:\\n"
    "  •  HOLD  ⌥ Space (Option+Space)         for quick dictation — release to paste.\\n"
    "  •  TAP   ⌥ ⇧ Space (Option+Shift+Space) for long-form — tap again to stop and paste.\\n"
    "\\n"
    "Toggle-mode auto-stops after 30 seconds of silence OR 10 minutes total — whichever comes "
    "first. Prevents forgotten sessions from quietly billing Deepgram (~$0.26/hr while open) and "
    "dribbling stray transcripts into whatever app you wandered into. The mic icon going back to "
    "grey is your cue.\", 12 regular, label, wraps, at most 640\n"
    "  separator\n"
    "  stack horizontal, alignment 10, spacing 12\n"
    "    label \"Deepgram API key\", 13 medium, label, width 160\n"
    "    secure field \"\", placeholder \"Paste your Deepgram API key\", called \"Deepgram API "
    "key\", at least 380, hugging 250, compression 250\n"
    "    button \"Save\", action \"saveApiKey\", bezel 1, control size 0, at least 80\n"
    "  stack horizontal, alignment 10, spacing 12\n"
    "    spacer, width 160\n"
    "    label \"\", 12 regular, label\n"
    "  stack horizontal, alignment 10, spacing 12\n"
    "    label \"Microphone\", 13 medium, label, width 160, hugging 250\n"
    "    label \"—\", 12 regular, label, hugging 250\n"
    "    button \"Grant\", action \"grantMic\", called \"Grant Microphone\", bezel 1, control size "
    "0, at least 110\n"
    "  stack horizontal, alignment 10, spacing 12\n"
    "    label \"Accessibility\", 13 medium, label, width 160, hugging 250\n"
    "    label \"—\", 12 regular, label, hugging 250\n"
    "    button \"Grant\", action \"grantAccess\", called \"Grant Accessibility\", bezel 1, "
    "control size 0, at least 110\n"
    "  separator\n"
    "  checkbox \"Launch at login (recommended — keeps the menu-bar icon always available)\", "
    "action \"toggleLoginItem:\", off\n"
    "  separator\n"
    "  label \"After granting Accessibility, restart the app — macOS only re-reads it at "
    "launch.\", 11 regular, secondaryLabel, wraps, at most 460\n"
    "  button \"Restart Tarvik Dictate\", action \"restartApp\", bezel 1, control size 0\n";

TEST_F(SetupWindow, IsBuiltHiddenAndCentredWithAllContentOnFirstUse) {
    EXPECT_TRUE(platform.userInterface().windows.empty());
    SetupWindowController::shared();
    ASSERT_EQ(platform.userInterface().windows.size(), 1U);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(window().frame().origin, (platform::Point{225, 145}));
    EXPECT_EQ(window().content->tree(), expectedContent);
    EXPECT_EQ(platform.timers().runningTimers(), 0U);
}

TEST_F(SetupWindow, HasItsFrameLevelAndBehaviour) {
    SetupWindowController::shared();
    const platform::WindowDescription& look = window().look;
    EXPECT_EQ(look.contentSize, (platform::Size{990, 635}));
    EXPECT_EQ(look.minimumSize, (platform::Size{830, 555}));
    EXPECT_EQ(look.styleMask, 15U);
    EXPECT_EQ(look.title, "Tarvik Dictate");
    EXPECT_EQ(static_cast<int>(look.level), 3);
    EXPECT_EQ(look.collectionBehavior, 257U);
    EXPECT_FALSE(look.hidesOnDeactivate);
    EXPECT_FALSE(look.titlebarAppearsTransparent);
    EXPECT_FALSE(look.isTitleHidden);
    EXPECT_FALSE(window().background);
}

TEST_F(SetupWindow, ShowsTheStoredKeyInItsFieldFromTheStart) {
    platform.userDefaults().setString("secret", "deepgramApiKey");
    show();
    EXPECT_EQ(window().field("Deepgram API key")->text(), "secret");
    EXPECT_TRUE(shows("✓ Saved", platform::SystemColor::green));
}

TEST_F(SetupWindow, CheckboxStartsWithTheStateOfTheSystem) {
    platform.loginItem().currentStatus = platform::LoginItemStatus::enabled;
    SetupWindowController::shared();
    EXPECT_TRUE(window().checkbox()->isOn());
}

TEST_F(SetupWindow, WithoutAVersionShowsAQuestionMark) {
    platform.bundle().removeVersion();
    SetupWindowController::shared();
    EXPECT_TRUE(window().label("Version ?"));
}

TEST_F(SetupWindow, UsesTheBundledIconWithoutAnApplicationIcon) {
    platform.userInterface().hasApplicationIcon = false;
    SetupWindowController::shared();
    EXPECT_NE(window().content->tree().find("image \"AppIcon\""), std::string::npos);
}

TEST_F(SetupWindow, UsesTheGenericIconWithoutAnyOther) {
    platform.userInterface().hasApplicationIcon = false;
    platform.userInterface().missingImages = {"AppIcon"};
    SetupWindowController::shared();
    EXPECT_NE(window().content->tree().find("image \"generic application icon\""),
              std::string::npos);
}

TEST_F(SetupWindow, ShowTakesItsStepsInOrder) {
    SetupWindowController::shared();
    platform.journal().clear();
    SetupWindowController::shared().show();
    EXPECT_EQ(platform.journal().lines(),
              Lines({"setFrameOrigin", "activate", "showWindow", "orderFrontRegardless",
                     "authorizationStatusForAudio", "isProcessTrusted"}));
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(window().frame().origin, (platform::Point{430, 245}));
}

TEST_F(SetupWindow, ShowWithoutAScreenKeepsThePosition) {
    platform.userInterface().screen.reset();
    SetupWindowController::shared().show();
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(platform.journal().count("setFrameOrigin"), 0U);
}

TEST_F(SetupWindow, ShownAgainReturnsToItsCorner) {
    show();
    window().setFrameOrigin({1, 2});
    SetupWindowController::shared().show();
    EXPECT_EQ(window().frame().origin, (platform::Point{430, 245}));
    EXPECT_EQ(platform.userInterface().windows.size(), 1U);
}

TEST_F(SetupWindow, ShownTwiceHasOneTimerAndClosedHasNone) {
    show();
    show();
    EXPECT_EQ(platform.timers().runningTimers(), 1U);
    window().close();
    EXPECT_EQ(platform.timers().runningTimers(), 0U);
    show();
    EXPECT_EQ(platform.timers().runningTimers(), 1U);
}

TEST_F(SetupWindow, ReadsEverythingOnceASecondWhileItIsOpen) {
    setMicrophone(2);
    platform.accessibility().isTrusted = false;
    show();
    EXPECT_EQ(statusAfter("Microphone"), "✗ Not granted");
    EXPECT_EQ(statusAfter("Accessibility"), "✗ Not granted");
    EXPECT_TRUE(shows("✗ Not set", platform::SystemColor::red));

    setMicrophone(3);
    platform.accessibility().isTrusted = true;
    platform.userDefaults().setString("secret", "deepgramApiKey");
    platform.loginItem().currentStatus = platform::LoginItemStatus::enabled;
    platform.advance(Seconds(0.99));
    EXPECT_EQ(statusAfter("Microphone"), "✗ Not granted");
    platform.advance(Seconds(0.01));
    EXPECT_EQ(statusAfter("Microphone"), "✓ Granted");
    EXPECT_EQ(statusAfter("Accessibility"), "✓ Granted");
    EXPECT_TRUE(shows("✓ Saved", platform::SystemColor::green));
    EXPECT_TRUE(window().checkbox()->isOn());
    EXPECT_EQ(window().field("Deepgram API key")->text(), "");
}

TEST_F(SetupWindow, ReadsNothingOnceItIsClosed) {
    show();
    window().close();
    platform.journal().clear();
    platform.advance(Seconds(60));
    EXPECT_EQ(platform.journal().lines(), Lines());
}

TEST_F(SetupWindow, OnlyAuthorisedCountsAsGranted) {
    for (const int status : {-1, 0, 1, 2, 3, 4, 99}) {
        setMicrophone(status);
        show();
        EXPECT_EQ(statusAfter("Microphone"), status == 3 ? "✓ Granted" : "✗ Not granted") << status;
    }
}

TEST_F(SetupWindow, OnlyEnabledCountsAsALoginItem) {
    using platform::LoginItemStatus;
    for (const LoginItemStatus status :
         {LoginItemStatus::notRegistered, LoginItemStatus::enabled,
          LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
        platform.loginItem().currentStatus = status;
        show();
        EXPECT_EQ(window().checkbox()->isOn(), status == LoginItemStatus::enabled);
    }
}

TEST_F(SetupWindow, SavesTheKeyTrimmedAndLeavesTheFieldAsTyped) {
    show();
    window().field("Deepgram API key")->type("  new key \n");
    window().button("Save")->press();
    EXPECT_EQ(platform.userDefaults().stringForKey("deepgramApiKey"), "new key");
    EXPECT_EQ(window().field("Deepgram API key")->text(), "  new key \n");
    EXPECT_TRUE(shows("✓ Saved", platform::SystemColor::green));
}

TEST_F(SetupWindow, KeyOfWhiteSpaceRemovesTheStoredKey) {
    platform.userDefaults().setString("secret", "deepgramApiKey");
    show();
    window().field("Deepgram API key")->type(" \r\n\t ");
    window().button("Save")->press();
    EXPECT_FALSE(platform.userDefaults().has("deepgramApiKey"));
    EXPECT_TRUE(shows("✗ Not set", platform::SystemColor::red));
}

TEST_F(SetupWindow, GrantRequestsAnUndeterminedMicrophoneAndRefreshesAfterwards) {
    for (const int status : {0, 7}) {
        setMicrophone(status);
        platform.captureAuthorization().isAnswerHeld = true;
        show();
        grantButton("Microphone")->press();
        EXPECT_EQ(openedUrls(), Lines());
        setMicrophone(3);
        platform.captureAuthorization().answer(true);
        platform.runUntilIdle();
        EXPECT_EQ(statusAfter("Microphone"), "✓ Granted");
    }
    EXPECT_EQ(platform.captureAuthorization().requests, 2);
}

TEST_F(SetupWindow, GrantOpensTheMicrophoneSettingsOtherwise) {
    for (const int status : {1, 2, 3}) {
        setMicrophone(status);
        platform.workspace().openedUrls.clear();
        show();
        grantButton("Microphone")->press();
        EXPECT_EQ(openedUrls(), Lines({"x-apple.systempreferences:com.apple.preference.security?"
                                       "Privacy_Microphone"}));
    }
    EXPECT_EQ(platform.captureAuthorization().requests, 0);
}

TEST_F(SetupWindow, GrantOfAccessibilityTakesItsStepsInOrder) {
    platform.accessibility().isTrusted = false;
    show();
    grantButton("Accessibility")->press();
    EXPECT_EQ(platform.log().lines(), Lines({"TarvikDictate: accessibility trusted → false"}));
    EXPECT_EQ(platform.journal().lines(),
              Lines({"isProcessTrustedWithOptions true",
                     "log TarvikDictate: accessibility trusted → false",
                     "activateFileViewerSelecting /Applications/Tarvik Dictate.app",
                     "openUrl x-apple.systempreferences:com.apple.preference.security?"
                     "Privacy_Accessibility"}));
}

TEST_F(SetupWindow, CheckboxSwitchesTheLoginItem) {
    show();
    window().checkbox()->click();
    EXPECT_EQ(platform.loginItem().registrations, 1);
    EXPECT_TRUE(window().checkbox()->isOn());
    window().checkbox()->click();
    EXPECT_EQ(platform.loginItem().unregistrations, 1);
    EXPECT_FALSE(window().checkbox()->isOn());
    EXPECT_FALSE(platform.userDefaults().has("loginItemAutoConfigured"));
}

TEST_F(SetupWindow, CheckboxSnapsBackWhenTheSystemRefuses) {
    show();
    platform.loginItem().registerFailure = Error{13, "Permission denied"};
    window().checkbox()->click();
    EXPECT_FALSE(window().checkbox()->isOn());
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: LoginItem.setEnabled(true) failed: Permission denied"}));
}

TEST_F(SetupWindow, CheckboxSnapsBackToOnWhenTheSystemRefusesToSwitchOff) {
    platform.loginItem().currentStatus = platform::LoginItemStatus::enabled;
    platform.loginItem().unregisterFailure = Error{13, "Permission denied"};
    show();
    window().checkbox()->click();
    EXPECT_TRUE(window().checkbox()->isOn());
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: LoginItem.setEnabled(false) failed: Permission denied"}));
}

TEST_F(SetupWindow, RestartEndsAtOnceAndStartsTheNextInstanceALittleLater) {
    show();
    window().button("Restart Tarvik Dictate")->press();
    ASSERT_EQ(platform.taskLauncher().launches.size(), 1U);
    EXPECT_EQ(platform.taskLauncher().launches[0].launchPath, "/bin/sh");
    EXPECT_EQ(platform.taskLauncher().launches[0].arguments,
              Lines({"-c", "sleep 0.6 && /usr/bin/open -n \"/Applications/Tarvik Dictate.app\""}));
    EXPECT_EQ(platform.journal().lines(), Lines({"launch /bin/sh", "terminate"}));
}

TEST_F(SetupWindow, RestartEndsTheApplicationEvenWhenTheLaunchFails) {
    show();
    platform.taskLauncher().failure = Error{2, "No such file or directory"};
    window().button("Restart Tarvik Dictate")->press();
    EXPECT_TRUE(platform.application().isTerminated());
    EXPECT_EQ(platform.log().lines(), Lines());
}

TEST(SettingsLinks, AreTheSystemsOwn) {
    EXPECT_EQ(SettingsURLs::microphone,
              "x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone");
    EXPECT_EQ(SettingsURLs::accessibility,
              "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility");
}

}  // namespace
}  // namespace tarvik
