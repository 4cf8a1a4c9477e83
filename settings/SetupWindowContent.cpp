// SPDX-License-Identifier: MIT

#include "base/BuildConstants.h"
#include "settings/BundleVersion.h"
#include "settings/KeychainStore.h"
#include "settings/SetupWindowController.h"

// The content of the setup window, from top to bottom.
namespace tarvik {

namespace {

using platform::FontWeight;
using platform::LabelWrapping;
using platform::Orientation;
using platform::StackAlignment;
using platform::SystemColor;

constexpr double iconSide = 72;
constexpr double textWidth = 640;
constexpr double restartNoteWidth = 460;
constexpr double minKeyFieldWidth = 380;
constexpr double minSaveButtonWidth = 80;
constexpr double rowSpacing = 12;

std::string instructions() {
    return std::string(
               "1.  Click Grant next to Microphone → click Allow on the system prompt.\n"
               "2.  Click Grant next to Accessibility → click Open System Settings → toggle "
               "TarvikDictate ON → return here and click Restart.\n"
               "3.  Get a free Deepgram API key at ") +
           signUpPage +
           ", paste it below, click Save.\n"
           "\n"
           "Two ways to dictate from any text field on your Mac:\n"
           "  •  HOLD  ⌥ Space (Option+Space)         for quick dictation — release to paste.\n"
           "  •  TAP   ⌥ ⇧ Space (Option+Shift+Space) for long-form — tap again to stop and "
           "paste.\n"
           "\n"
           "Toggle-mode auto-stops after 30 seconds of silence OR 10 minutes total — whichever "
           "comes first. Prevents forgotten sessions from quietly billing Deepgram (~$0.26/hr "
           "while open) and dribbling stray transcripts into whatever app you wandered into. The "
           "mic icon going back to grey is your cue.";
}

}  // namespace

std::shared_ptr<platform::View> SetupWindowController::buildContent() {
    const auto wrapping = [this](std::string text, double size, platform::Color color,
                                 double width) {
        return userInterface_.makeLabel({.text = std::move(text),
                                         .font = {size},
                                         .color = color,
                                         .wrapping = LabelWrapping::always,
                                         .preferredMaxLayoutWidth = width});
    };
    micRow_ = std::make_unique<ConfigRow>(userInterface_, "Microphone", "Grant", "grantMic",
                                          [this] { grantMic(); });
    accessRow_ = std::make_unique<ConfigRow>(userInterface_, "Accessibility", "Grant",
                                             "grantAccess", [this] { grantAccess(); });
    loginItemCheckbox_ = userInterface_.makeCheckbox(
        {.title = "Launch at login (recommended — keeps the menu-bar icon always available)",
         .isOn = isLoginItemEnabled(),
         .actionName = "toggleLoginItem:",
         .action = [this](platform::Checkbox& checkbox) { toggleLoginItem(checkbox); }});

    return userInterface_.makeStack(
        {.orientation = Orientation::vertical,
         .alignment = StackAlignment::leading,
         .spacing = 16,
         .edgeInsets = {24, 28, 24, 28},
         .views = {
             buildHeader(),
             wrapping("Hold-to-talk dictation that pastes into any app. Three quick steps:", 13,
                      SystemColor::secondaryLabel, textWidth),
             wrapping(instructions(), 12, SystemColor::label, textWidth),
             userInterface_.makeSeparator(),
             buildKeyRow(),
             buildKeyStatusRow(),
             micRow_->view(),
             accessRow_->view(),
             userInterface_.makeSeparator(),
             loginItemCheckbox_,
             userInterface_.makeSeparator(),
             wrapping("After granting Accessibility, restart the app — macOS only re-reads it at "
                      "launch.",
                      11, SystemColor::secondaryLabel, restartNoteWidth),
             userInterface_.makeButton({.title = "Restart Tarvik Dictate",
                                        .actionName = "restartApp",
                                        .action = [this] { restartApp(); }}),
         }});
}

std::shared_ptr<platform::View> SetupWindowController::buildHeader() {
    const auto titles = userInterface_.makeStack(
        {.orientation = Orientation::vertical,
         .alignment = StackAlignment::leading,
         .spacing = 2,
         .views = {
             userInterface_.makeLabel({.text = "Tarvik Dictate", .font = {24, FontWeight::bold}}),
             userInterface_.makeLabel({.text = "Version " + versionText(platform_.bundle()),
                                       .font = {11},
                                       .color = SystemColor::tertiaryLabel})}});
    return userInterface_.makeStack(
        {.orientation = Orientation::horizontal,
         .alignment = StackAlignment::centerY,
         .spacing = 16,
         .views = {userInterface_.makeImageView(
                       {.image = iconImage(),
                        .scaling = platform::ImageScaling::proportionallyUpOrDown,
                        .layout = {.width = iconSide, .height = iconSide}}),
                   titles}});
}

std::shared_ptr<platform::Image> SetupWindowController::iconImage() {
    if (std::shared_ptr<platform::Image> own = userInterface_.applicationIconImage()) {
        return own;
    }
    if (std::shared_ptr<platform::Image> resource = userInterface_.imageNamed("AppIcon")) {
        return resource;
    }
    return userInterface_.genericApplicationIcon();
}

std::shared_ptr<platform::View> SetupWindowController::buildKeyRow() {
    keyField_ = userInterface_.makeTextField(
        {.text = KeychainStore::shared().apiKey().value_or(""),
         .placeholder = "Paste your Deepgram API key",
         .isSecure = true,
         .layout = {.minimumWidth = minKeyFieldWidth,
                    .horizontalContentHugging = ConfigRow::yielding,
                    .horizontalCompressionResistance = ConfigRow::yielding},
         .accessibilityLabel = "Deepgram API key"});
    return userInterface_.makeStack(
        {.orientation = Orientation::horizontal,
         .alignment = StackAlignment::centerY,
         .spacing = rowSpacing,
         .views = {userInterface_.makeLabel({.text = "Deepgram API key",
                                             .font = {13, FontWeight::medium},
                                             .layout = {.width = ConfigRow::nameWidth}}),
                   keyField_,
                   userInterface_.makeButton({.title = "Save",
                                              .layout = {.minimumWidth = minSaveButtonWidth},
                                              .actionName = "saveApiKey",
                                              .action = [this] { saveApiKey(); }})}});
}

std::shared_ptr<platform::View> SetupWindowController::buildKeyStatusRow() {
    keyStatus_ = userInterface_.makeLabel({.text = "", .font = {12}});
    return userInterface_.makeStack(
        {.orientation = Orientation::horizontal,
         .spacing = rowSpacing,
         .views = {userInterface_.makeSpacer({.width = ConfigRow::nameWidth}), keyStatus_}});
}

}  // namespace tarvik
