// SPDX-License-Identifier: MIT

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

class WindowConformance : public SystemConformance {
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

TEST_P(WindowConformance, AWindowIsHiddenUntilItIsShown) {
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

TEST_P(WindowConformance, EachClosingIsToldOnceAndTheWindowCanBeShownAgain) {
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

TEST_P(WindowConformance, AButtonMayCloseItsWindow) {
    const auto made = window();
    const auto later = button("Maybe later", [&] { made->close(); });
    made->setContent(column({later}), std::nullopt);
    made->show();
    world->press(*later);
    EXPECT_FALSE(made->isVisible());
    EXPECT_EQ(closings, 1);
}

TEST_P(WindowConformance, AControlMayReplaceTheContentItIsIn) {
    const auto made = window();
    const auto watched = std::make_shared<int>();
    std::weak_ptr<int> alive = watched;
    std::weak_ptr<platform::Button> old;
    {
        const auto replacing = button("Replace", [&, watched] {
            made->setContent(column({button("New", [] {})}), platform::black);
            // The window is the only owner of the running callback.
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

TEST_P(WindowConformance, AViewOutlivesTheStackAndTheWindowThatShowedIt) {
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

TEST_P(WindowConformance, TheFrameIsWhereItWasPutAndHoldsTheContent) {
    const auto made = window();
    made->setContent(column({}), std::nullopt);
    EXPECT_GE(made->frame().size.width, 400);
    EXPECT_GE(made->frame().size.height, 300);
    made->setFrameOrigin({50, 70});
    EXPECT_NEAR(made->frame().origin.x, 50, 0.5);
    EXPECT_NEAR(made->frame().origin.y, 70, 0.5);
}

TEST_P(WindowConformance, AWindowIsCentredOnTheMainScreen) {
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

INSTANTIATE_TEST_SUITE_P(Worlds, WindowConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
