// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "settings/ConfigRow.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

class Row : public testing::Test {
  protected:
    std::string tree() {
        return std::dynamic_pointer_cast<simulated::SimulatedView>(row.view())->tree();
    }
    /// The description of a row with this status text and colour.
    static std::string treeWith(const std::string& status) {
        return "stack horizontal, alignment 10, spacing 12\n"
               "  label \"Microphone\", 13 medium, label, width 160, hugging 250\n"
               "  label " +
               status +
               ", hugging 250\n"
               "  button \"Grant\", action \"grantMic\", called \"Grant Microphone\", bezel 1, "
               "control size 0, at least "
               "110\n";
    }

    simulated::SimulatedPlatform platform;
    int presses = 0;
    ConfigRow row{platform.userInterface(), "Microphone", "Grant", "grantMic",
                  [this] { ++presses; }};
};

TEST_F(Row, InitiallyShowsADashInTheDefaultColour) {
    EXPECT_EQ(tree(), treeWith("\"—\", 12 regular, label"));
}

TEST_F(Row, GrantedIsACheckMarkInGreen) {
    row.apply(PermissionStatus::granted, "Granted", "Not granted");
    EXPECT_EQ(tree(), treeWith("\"✓ Granted\", 12 regular, green"));
}

TEST_F(Row, DeniedAndNeverAskedLookTheSame) {
    for (const PermissionStatus status :
         {PermissionStatus::denied, PermissionStatus::notDetermined}) {
        row.apply(PermissionStatus::granted, "Granted", "Not granted");
        row.apply(status, "Granted", "Not granted");
        EXPECT_EQ(tree(), treeWith("\"✗ Not granted\", 12 regular, red"));
    }
}

TEST_F(Row, EmptyLabelLeavesTheMarkAndASpace) {
    row.apply(PermissionStatus::granted, "", "");
    EXPECT_EQ(tree(), treeWith("\"✓ \", 12 regular, green"));
    row.apply(PermissionStatus::denied, "", "");
    EXPECT_EQ(tree(), treeWith("\"✗ \", 12 regular, red"));
}

TEST_F(Row, TheSameStatusAgainChangesNothing) {
    row.apply(PermissionStatus::granted, "Granted", "Not granted");
    const std::string before = tree();
    row.apply(PermissionStatus::granted, "Granted", "Not granted");
    EXPECT_EQ(tree(), before);
}

TEST_F(Row, TheButtonPerformsTheActionInEveryState) {
    const auto stack = std::dynamic_pointer_cast<simulated::SimulatedStack>(row.view());
    const auto button = std::dynamic_pointer_cast<simulated::SimulatedButton>(stack->children()[2]);
    button->press();
    row.apply(PermissionStatus::granted, "Granted", "Not granted");
    button->press();
    EXPECT_EQ(presses, 2);
}

}  // namespace
}  // namespace tarvik
