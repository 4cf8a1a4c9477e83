// SPDX-License-Identifier: MIT

#include <string>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

class ViewConformance : public SystemConformance {
  protected:
    platform::UserInterface& userInterface = world->userInterface();
};

TEST_P(ViewConformance, AFieldHoldsExactlyWhatWasTyped) {
    for (const bool isSecure : {false, true}) {
        platform::TextFieldDescription description;
        description.text = " stored ";
        description.isSecure = isSecure;
        const auto field = userInterface.makeTextField(description);
        EXPECT_EQ(field->text(), " stored ");
        world->type(*field, "  Schlüssel & \"Co\" 😀 ");
        EXPECT_EQ(field->text(), "  Schlüssel & \"Co\" 😀 ");
        const std::string tenThousand(10000, 'k');
        world->type(*field, tenThousand);
        EXPECT_EQ(field->text(), tenThousand);
        world->type(*field, "");
        EXPECT_EQ(field->text(), "");
    }
}

TEST_P(ViewConformance, AButtonKeepsItsTitleAndDoesItsAction) {
    int pressed = 0;
    const auto made =
        userInterface.makeButton({.title = "Fish & Chips", .action = [&] { ++pressed; }});
    EXPECT_EQ(made->title(), "Fish & Chips");
    made->setBezelColor(platform::RgbColor{0.1, 0.8, 0.9});
    made->setAttributedTitle({"Salt & Vinegar", platform::black, {13}});
    EXPECT_EQ(made->title(), "Salt & Vinegar");
    world->press(*made);
    world->press(*made);
    EXPECT_EQ(pressed, 2);
}

TEST_P(ViewConformance, OnlyTheUserMakesACheckboxCall) {
    std::vector<bool> calls;
    platform::CheckboxDescription description;
    description.title = "Launch at login";
    description.isOn = true;
    description.action = [&](platform::Checkbox& checkbox) { calls.push_back(checkbox.isOn()); };
    const auto checkbox = userInterface.makeCheckbox(description);
    EXPECT_TRUE(checkbox->isOn());
    checkbox->setOn(false);
    EXPECT_FALSE(checkbox->isOn());
    EXPECT_TRUE(calls.empty());
    world->click(*checkbox);
    EXPECT_EQ(calls, std::vector<bool>{true});
    EXPECT_TRUE(checkbox->isOn());
}

TEST_P(ViewConformance, ACheckboxCanBeTakenBackByItsOwnAction) {
    platform::CheckboxDescription description;
    int calls = 0;
    description.action = [&](platform::Checkbox& checkbox) {
        ++calls;
        checkbox.setOn(false);
    };
    const auto checkbox = userInterface.makeCheckbox(description);
    world->click(*checkbox);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(checkbox->isOn());
}

TEST_P(ViewConformance, EveryPictureThatTheWindowsShowIsThere) {
    EXPECT_TRUE(userInterface.imageNamed("AppIcon"));
    EXPECT_TRUE(userInterface.imageNamed("TarvikWordmark"));
    EXPECT_TRUE(userInterface.applicationIconImage());
    EXPECT_TRUE(userInterface.genericApplicationIcon());
}

TEST_P(ViewConformance, TheTwoSymbolsAreKnown) {
    EXPECT_TRUE(userInterface.systemSymbol("mic", "Tarvik Dictate"));
    EXPECT_TRUE(userInterface.systemSymbol("mic.fill", "Tarvik Dictate"));
}

INSTANTIATE_TEST_SUITE_P(Worlds, ViewConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
