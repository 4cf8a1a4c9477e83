// SPDX-License-Identifier: MIT

#include "usage/CTAWindowController.h"

#include <string>

#include "base/BuildConstants.h"
#include "usage/UsageTracker.h"

namespace tarvik {

namespace {

using platform::FontWeight;
using platform::RgbColor;

constexpr RgbColor nearBlack{0.039, 0.039, 0.039};
constexpr RgbColor lightGrey{0.83, 0.83, 0.85};
constexpr RgbColor mutedGrey{0.44, 0.44, 0.48};
constexpr RgbColor brightCyan{0.133, 0.827, 0.933};
constexpr double bodyWidth = 420;
constexpr double visitButtonHeight = 36;

struct Texts {
    const char* headline;
    const char* body;
};

Texts textsFor(CTATier tier) {
    if (tier == CTATier::tenMinute) {
        return {"Enjoying Tarvik Dictate?",
                "This is one tool from the Tarvik framework — a complete operating system for solo "
                "founders and lean teams. If voice-to-text is useful, the rest of what we've built "
                "will blow your mind."};
    }
    return {"You're getting real value here.",
            "An hour of dictation later — clearly this is sticking. Tarvik Dictate is just one "
            "primitive in a much larger system: agents, skills, frameworks, and an entire "
            "operating layer for how solo operators actually work. Come see how deep this goes."};
}

}  // namespace

CTAWindowController::CTAWindowController(platform::Platform& platform)
    : platform_(platform),
      window_(platform.userInterface().makeWindow({.contentSize = {520, 360},
                                                   .styleMask = platform::titledWindow |
                                                                platform::closableWindow |
                                                                platform::miniaturizableWindow,
                                                   .titlebarAppearsTransparent = true,
                                                   .isTitleHidden = true,
                                                   .backgroundColor = nearBlack,
                                                   .level = platform::WindowLevel::floating})) {}

CTAWindowController& CTAWindowController::shared() {
    return platform::Platform::current().shared<CTAWindowController>();
}

// Unlike the setup window this window appears while the user works in another program. Only the
// firmer request brings it to the front then.
void CTAWindowController::show(CTATier tier) {
    tier_ = tier;
    buildContent();
    window_->show();
    window_->center();
    window_->orderFrontRegardless();
    platform_.application().activateIgnoringOtherApps();
}

void CTAWindowController::buildContent() {
    platform::UserInterface& userInterface = platform_.userInterface();
    const Texts texts = textsFor(tier_);
    window_->setContent(
        userInterface.makeStack(
            {.orientation = platform::Orientation::vertical,
             .alignment = platform::StackAlignment::centerX,
             .spacing = 18,
             .edgeInsets = {36, 36, 28, 36},
             .views = {userInterface.makeImageView(
                           {.image = userInterface.imageNamed("TarvikWordmark"),
                            .scaling = platform::ImageScaling::proportionallyDown,
                            .layout = {.width = 160, .height = 32}}),
                       userInterface.makeLabel({.text = texts.headline,
                                                .font = {22, FontWeight::bold},
                                                .color = platform::white,
                                                .alignment = platform::TextAlignment::center,
                                                .wrapping = platform::LabelWrapping::whenNarrow}),
                       userInterface.makeLabel({.text = texts.body,
                                                .font = {13},
                                                .color = lightGrey,
                                                .alignment = platform::TextAlignment::center,
                                                .wrapping = platform::LabelWrapping::always,
                                                .preferredMaxLayoutWidth = bodyWidth}),
                       buildButtonRow(),
                       userInterface.makeButton({.title = "Don't show again",
                                                 .bezelStyle = platform::BezelStyle::recessed,
                                                 .isBordered = false,
                                                 .contentTintColor = mutedGrey,
                                                 .font = platform::Font{11},
                                                 .actionName = "neverShowTapped",
                                                 .action = [this] { neverShowTapped(); }})}}),
        nearBlack);
}

std::shared_ptr<platform::View> CTAWindowController::buildButtonRow() {
    platform::UserInterface& userInterface = platform_.userInterface();
    const std::shared_ptr<platform::Button> visit =
        userInterface.makeButton({.title = std::string("Visit ") + websiteDomain,
                                  .controlSize = platform::ControlSize::large,
                                  .layout = {.height = visitButtonHeight},
                                  .actionName = "visitTapped",
                                  .action = [this] { visitTapped(); }});
    styleButton(*visit, true);
    const std::shared_ptr<platform::Button> later = userInterface.makeButton(
        {.title = "Maybe later", .actionName = "laterTapped", .action = [this] { laterTapped(); }});
    styleButton(*later, false);
    return userInterface.makeStack(
        {.orientation = platform::Orientation::horizontal, .spacing = 12, .views = {visit, later}});
}

void CTAWindowController::styleButton(platform::Button& button, bool primary) {
    button.setAttributedTitle({.text = button.title(),
                               .foregroundColor = primary ? platform::black : lightGrey,
                               .font = {13, primary ? FontWeight::semibold : FontWeight::regular}});
    if (primary) {
        button.setBezelColor(brightCyan);
    }
}

void CTAWindowController::visitTapped() {
    // The workspace logs a failure. The window closes anyway, because the user has decided.
    static_cast<void>(platform_.workspace().openUrl(std::string("https://") + websiteDomain));
    window_->close();
}

void CTAWindowController::laterTapped() {
    window_->close();
}

void CTAWindowController::neverShowTapped() {
    UsageTracker::shared().dismissPermanently();
    window_->close();
}

}  // namespace tarvik
