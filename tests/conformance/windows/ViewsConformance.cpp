#include <memory>
#include <string>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

class ViewsConformance : public SystemConformance {
  protected:
    std::shared_ptr<platform::Button> button(const std::string& title,
                                             std::function<void()> action) {
        platform::ButtonDescription description;
        description.title = title;
        description.action = std::move(action);
        return userInterface.makeButton(description);
    }

    std::shared_ptr<platform::View> column(std::vector<std::shared_ptr<platform::View>> views) {
        return userInterface.makeStack({.orientation = platform::Orientation::vertical,
                                        .alignment = platform::StackAlignment::leading,
                                        .spacing = 8,
                                        .edgeInsets = {10, 10, 10, 10},
                                        .views = std::move(views)});
    }

    std::shared_ptr<platform::Window> window() {
        return userInterface.makeWindow(
            {.contentSize = {400, 300},
             .styleMask = platform::titledWindow | platform::closableWindow,
             .title = "Window",
             .willClose = [this] { ++closings; }});
    }

    platform::UserInterface& userInterface = world->userInterface();
    int closings = 0;
};

TEST_P(ViewsConformance, AFieldHoldsExactlyWhatWasTyped) {
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

TEST_P(ViewsConformance, ReturnInAFieldDoesItsActionOnce) {
    int saved = 0;
    platform::TextFieldDescription description;
    description.action = [&] { ++saved; };
    const auto field = userInterface.makeTextField(description);
    world->type(*field, "key");
    EXPECT_EQ(saved, 0);
    world->pressReturn(*field);
    EXPECT_EQ(saved, 1);
}

TEST_P(ViewsConformance, AButtonKeepsItsTitleAndDoesItsAction) {
    int pressed = 0;
    const auto made = button("Fish & Chips", [&] { ++pressed; });
    EXPECT_EQ(made->title(), "Fish & Chips");
    made->setBezelColor(platform::RgbColor{0.1, 0.8, 0.9});
    made->setAttributedTitle({"Salt & Vinegar", platform::black, {13}});
    EXPECT_EQ(made->title(), "Salt & Vinegar");
    world->press(*made);
    world->press(*made);
    EXPECT_EQ(pressed, 2);
}

TEST_P(ViewsConformance, OnlyTheUserMakesACheckboxCall) {
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

TEST_P(ViewsConformance, ACheckboxCanBeTakenBackByItsOwnAction) {
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

TEST_P(ViewsConformance, EveryPictureThatTheWindowsShowIsThere) {
    EXPECT_TRUE(userInterface.imageNamed("AppIcon"));
    EXPECT_TRUE(userInterface.imageNamed("TarvikWordmark"));
    EXPECT_TRUE(userInterface.applicationIconImage());
    EXPECT_TRUE(userInterface.genericApplicationIcon());
}

TEST_P(ViewsConformance, AWindowIsHiddenUntilItIsShown) {
    const auto made = window();
    EXPECT_FALSE(made->isVisible());
    made->setContent(column({}), std::nullopt);
    EXPECT_FALSE(made->isVisible());
    made->show();
    EXPECT_TRUE(made->isVisible());
    made->orderFrontRegardless();
    EXPECT_TRUE(made->isVisible());
    made->close();
    EXPECT_FALSE(made->isVisible());
    made->orderFrontRegardless();
    EXPECT_TRUE(made->isVisible());
}

TEST_P(ViewsConformance, EachClosingIsToldOnceAndTheWindowCanBeShownAgain) {
    const auto made = window();
    made->setContent(column({button("Close", [] {})}), std::nullopt);
    made->show();
    made->close();
    EXPECT_FALSE(made->isVisible());
    EXPECT_EQ(closings, 1);
    made->show();
    EXPECT_TRUE(made->isVisible());
    world->closeByHand(*made);
    EXPECT_TRUE(world->runUntil([&] { return !made->isVisible(); }));
    EXPECT_EQ(closings, 2);
}

TEST_P(ViewsConformance, AButtonMayCloseItsWindow) {
    const auto made = window();
    const auto later = button("Maybe later", [&] { made->close(); });
    made->setContent(column({later}), std::nullopt);
    made->show();
    world->press(*later);
    EXPECT_FALSE(made->isVisible());
    EXPECT_EQ(closings, 1);
}

TEST_P(ViewsConformance, AControlMayReplaceTheContentItIsIn) {
    const auto made = window();
    const auto watched = std::make_shared<int>();
    std::weak_ptr<int> alive = watched;
    std::weak_ptr<platform::Button> old;
    {
        const auto replacing = button("Replace", [&, watched] {
            made->setContent(column({button("New", [] {})}), platform::black);
            // Nobody else holds what is running here.
            EXPECT_FALSE(alive.expired());
        });
        old = replacing;
        made->setContent(column({replacing}), std::nullopt);
    }
    made->show();
    world->press(*old.lock());
    EXPECT_TRUE(made->isVisible());
    EXPECT_TRUE(world->runUntil([&] { return old.expired(); }));
}

TEST_P(ViewsConformance, AViewOutlivesTheStackAndTheWindowThatShowedIt) {
    platform::TextFieldDescription description;
    description.text = "kept";
    const auto field = userInterface.makeTextField(description);
    {
        const auto made = window();
        made->setContent(column({column({field})}), std::nullopt);
        made->show();
    }
    EXPECT_EQ(field->text(), "kept");
    const auto other = window();
    other->setContent(column({field}), std::nullopt);
    world->type(*field, "used again");
    EXPECT_EQ(field->text(), "used again");
}

TEST_P(ViewsConformance, TheFrameIsWhereItWasPutAndHoldsTheContent) {
    const auto made = window();
    made->setContent(column({}), std::nullopt);
    EXPECT_GE(made->frame().size.width, 400);
    EXPECT_GE(made->frame().size.height, 300);
    made->setFrameOrigin({50, 70});
    EXPECT_NEAR(made->frame().origin.x, 50, 0.5);
    EXPECT_NEAR(made->frame().origin.y, 70, 0.5);
}

TEST_P(ViewsConformance, AWindowIsCentredOnTheMainScreen) {
    const auto screen = userInterface.mainScreenVisibleFrame();
    ASSERT_TRUE(screen);
    const auto made = window();
    const auto expectCentred = [&] {
        const platform::Rect frame = made->frame();
        EXPECT_NEAR(frame.origin.x + frame.size.width / 2,
                    screen->origin.x + screen->size.width / 2, 1);
        EXPECT_NEAR(frame.origin.y + frame.size.height / 2,
                    screen->origin.y + screen->size.height / 2, 1);
    };
    expectCentred();
    made->setFrameOrigin({10, 10});
    made->center();
    expectCentred();
}

INSTANTIATE_TEST_SUITE_P(Worlds, ViewsConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
