// SPDX-License-Identifier: MIT

#include <string>

#include "tests/linux/accessibility/FakeProgramFixture.h"

namespace tarvik::tests {

namespace {

/// Writes into something around the field that has the focus.
class AtspiAroundFocus : public FakeProgramFixture {};

TEST_F(AtspiAroundFocus, ATextIsWrittenIntoTheFieldThatHasTheFocus) {
    open("honest", "begin");
    EXPECT_EQ(target->command("pane"), "done");
    EXPECT_TRUE(becomesTrue([this] { return focusedElement() != element; }, timeout));
    const platform::AXUIElementRef pane = focusedElement();
    EXPECT_EQ(target->command("focus"), "done");
    EXPECT_TRUE(becomesTrue([&] { return focusedElement() != pane; }, timeout));
    EXPECT_EQ(write(pane, " end"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin end");
    const platform::AXUIElementRef second = focusSecondField();
    EXPECT_EQ(write(pane, " more"), platform::axErrorAttributeUnsupported);
    EXPECT_EQ(target->command("read"), "");
}

// Each question waits for the reply to the one before.
TEST_F(AtspiAroundFocus, EachParentIsAskedForOnce) {
    open("honest", "begin");
    EXPECT_EQ(target->command("outer-pane"), "done");
    EXPECT_TRUE(becomesTrue([this] { return focusedElement() != element; }, timeout));
    const platform::AXUIElementRef pane = focusedElement();
    EXPECT_EQ(target->command("focus"), "done");
    EXPECT_TRUE(becomesTrue([&] { return focusedElement() != pane; }, timeout));
    EXPECT_EQ(write(pane, " one"), platform::axErrorSuccess);
    const std::string queries = target->command("parents");
    EXPECT_EQ(write(pane, " two"), platform::axErrorSuccess);
    EXPECT_EQ(target->command("parents"), queries);
    // What is not inside is asked for once, too.
    const platform::AXUIElementRef second = focusSecondField();
    EXPECT_EQ(write(pane, " more"), platform::axErrorAttributeUnsupported);
    const std::string queriesOfSecond = target->command("parents");
    EXPECT_NE(queriesOfSecond, queries);
    EXPECT_EQ(write(pane, " more"), platform::axErrorAttributeUnsupported);
    EXPECT_EQ(target->command("parents"), queriesOfSecond);
    EXPECT_EQ(target->command("focus"), "done");
    EXPECT_TRUE(becomesTrue([&] { return focusedElement() != second; }, timeout));
    EXPECT_EQ(write(pane, " three"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin one two three");
    EXPECT_EQ(target->command("read"), "");
}

}  // namespace

}  // namespace tarvik::tests
