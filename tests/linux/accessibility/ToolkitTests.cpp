// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <string>

#include "tests/conformance/accessibility/AtspiWorld.h"
#include "tests/linux/accessibility/TargetProcess.h"

namespace tarvik::tests {

namespace {

using platform::AXUIElementRef;

struct Toolkit {
    std::string program;
    std::string name;
};

class AtspiAccessibilityOfToolkits : public testing::TestWithParam<Toolkit> {
  protected:
    AXUIElementRef focus() {
        AXUIElementRef element;
        world.service().copyAttributeValue(world.service().createSystemWide(),
                                           platform::axFocusedUIElementAttribute, &element);
        return element;
    }

    AtspiWorld world{GetParam().program, "text"};
};

TEST_P(AtspiAccessibilityOfToolkits, TheFocusThatWasThereBeforeTheServiceIsFound) {
    const auto target = world.open({"before ", 7, 7});
    world.restartService();
    ASSERT_TRUE(becomesTrue([this] { return focus() != nullptr; }, Seconds(10)));
    EXPECT_EQ(world.service().setAttributeValue(focus(), platform::axSelectedTextAttribute, "text"),
              platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([&] { return target->text() == "before text"; }, Seconds(10)));
}

INSTANTIATE_TEST_SUITE_P(Atspi, AtspiAccessibilityOfToolkits,
                         testing::Values(Toolkit{"gtk3_target.py", "Gtk3"},
                                         Toolkit{"gtk4_target.py", "Gtk4"},
                                         Toolkit{"qt6_target.py", "Qt6"}),
                         [](const auto& toolkit) { return toolkit.param.name; });

}  // namespace

}  // namespace tarvik::tests
