// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/support/SimulatedPlatform.h"
#include "usage/CTAWindowController.h"
#include "usage/UsageTracker.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

constexpr auto dismissedKey = "ctaPermanentlyDismissed";

class CallToAction : public testing::Test {
  protected:
    void show(CTATier tier) {
        CTAWindowController::shared().show(tier);
        platform.journal().clear();
    }
    simulated::SimulatedWindow& window() { return *platform.userInterface().windows.at(0); }

    static std::string tree(const std::string& headline, const std::string& body) {
        return "stack vertical, alignment 9, spacing 18, insets 36 36 28 36\n"
               "  image \"TarvikWordmark\", scaling 0, width 160, height 32\n"
               "  label \"" +
               headline +
               "\", 22 bold, rgb(1, 1, 1, 1), centred, wraps when narrow\n"
               "  label \"" +
               body +
               "\", 13 regular, rgb(0.83, 0.83, 0.85, 1), centred, wraps, at most 420\n"
               "  stack horizontal, alignment 10, spacing 12\n"
               "    button \"Visit tarvik.example\", action \"visitTapped\", bezel 1, control size "
               "3, height 36, title "
               "rgb(0, 0, 0, 1) 13 semibold, bezel colour rgb(0.133, 0.827, 0.933, 1)\n"
               "    button \"Maybe later\", action \"laterTapped\", bezel 1, control size 0, title "
               "rgb(0.83, 0.83, 0.85, 1) 13 regular\n"
               "  button \"Don't show again\", action \"neverShowTapped\", bezel 13, control size "
               "0, borderless, tint "
               "rgb(0.44, 0.44, 0.48, 1), 11 regular\n";
    }
    static std::string tenMinuteTree() {
        return tree("Enjoying Tarvik Dictate?",
                    "This is one tool from the Tarvik framework — a complete operating system for "
                    "solo founders and lean teams. If voice-to-text is useful, the rest of what "
                    "we've built will blow your mind.");
    }
    static std::string sixtyMinuteTree() {
        return tree("You're getting real value here.",
                    "An hour of dictation later — clearly this is sticking. Tarvik Dictate is just "
                    "one primitive in a much larger system: agents, skills, frameworks, and an "
                    "entire operating layer for how solo operators actually work. Come see how "
                    "deep this goes.");
    }

    simulated::SimulatedPlatform platform;
};

TEST_F(CallToAction, WindowIsMadeEmptyAndHiddenWithItsFrameAndLevel) {
    CTAWindowController::shared();
    EXPECT_FALSE(window().isVisible());
    EXPECT_FALSE(window().content);
    EXPECT_EQ(window().frame().origin, (platform::Point{460, 282.5}));
    const platform::WindowDescription& look = window().look;
    EXPECT_EQ(look.contentSize, (platform::Size{520, 360}));
    EXPECT_FALSE(look.minimumSize);
    EXPECT_EQ(look.styleMask, 7U);
    EXPECT_EQ(look.title, "");
    EXPECT_TRUE(look.titlebarAppearsTransparent);
    EXPECT_TRUE(look.isTitleHidden);
    EXPECT_EQ(look.backgroundColor, (platform::RgbColor{0.039, 0.039, 0.039, 1}));
    EXPECT_EQ(static_cast<int>(look.level), 3);
}

TEST_F(CallToAction, ShowsTheTextsOfItsTierOnNearBlack) {
    show(CTATier::tenMinute);
    EXPECT_EQ(window().content->tree(), tenMinuteTree());
    EXPECT_EQ(window().background, (platform::RgbColor{0.039, 0.039, 0.039, 1}));
}

TEST_F(CallToAction, NextTierReplacesTheTextsInTheSameWindow) {
    show(CTATier::tenMinute);
    window().close();
    show(CTATier::sixtyMinute);
    EXPECT_EQ(window().content->tree(), sixtyMinuteTree());
    EXPECT_EQ(platform.userInterface().windows.size(), 1U);
}

TEST_F(CallToAction, IsShownCentredInFrontOfEverything) {
    CTAWindowController::shared();
    platform.journal().clear();
    CTAWindowController::shared().show(CTATier::tenMinute);
    EXPECT_EQ(platform.journal().lines(),
              Lines({"showWindow", "center", "orderFrontRegardless", "activateIgnoringOtherApps"}));
    EXPECT_EQ(window().frame().origin, (platform::Point{460, 282.5}));
}

TEST_F(CallToAction, MissingWordmarkLeavesItsSpaceEmpty) {
    platform.userInterface().missingImages = {"TarvikWordmark"};
    show(CTATier::tenMinute);
    EXPECT_NE(window().content->tree().find("image none, scaling 0, width 160, height 32"),
              std::string::npos);
}

TEST_F(CallToAction, VisitOpensTheWebsiteAndClosesTheWindow) {
    show(CTATier::tenMinute);
    window().button("Visit tarvik.example")->press();
    EXPECT_EQ(platform.journal().lines(), Lines({"openUrl https://tarvik.example", "closeWindow"}));
    EXPECT_FALSE(platform.userDefaults().has(dismissedKey));
}

TEST_F(CallToAction, VisitClosesTheWindowEvenWhenTheLinkCannotBeOpened) {
    platform.workspace().canOpenUrls = false;
    show(CTATier::tenMinute);
    window().button("Visit tarvik.example")->press();
    EXPECT_FALSE(window().isVisible());
}

TEST_F(CallToAction, MaybeLaterOnlyCloses) {
    show(CTATier::tenMinute);
    window().button("Maybe later")->press();
    EXPECT_EQ(platform.journal().lines(), Lines({"closeWindow"}));
    EXPECT_EQ(platform.userDefaults().writes(), 0);
}

TEST_F(CallToAction, DontShowAgainEndsAllCallsToAction) {
    show(CTATier::tenMinute);
    window().button("Don't show again")->press();
    EXPECT_FALSE(window().isVisible());
    EXPECT_TRUE(platform.userDefaults().boolForKey(dismissedKey));
    EXPECT_EQ(UsageTracker::shared().recordSession(4000), std::nullopt);
    EXPECT_EQ(platform.userDefaults().integerForKey("totalDictationSeconds"), 4000);
}

}  // namespace
}  // namespace tarvik
