// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "tests/conformance/accessibility/AccessibilityWorld.h"
#include "tests/support/Attempts.h"

namespace tarvik::tests {

namespace {

using platform::AXError;
using platform::AXUIElementRef;

constexpr Seconds timeout{10};
constexpr Seconds maxWrite{0.5};
/// What a busy machine may need to wake the waiting thread.
constexpr Seconds tolerance{0.05};

class AccessibilityConformance : public testing::TestWithParam<AccessibilityWorldMaker> {
  protected:
    AXUIElementRef focusedElement() {
        AXUIElementRef element;
        world->service().copyAttributeValue(world->service().createSystemWide(),
                                            platform::axFocusedUIElementAttribute, &element);
        return element;
    }

    /// The element that has the focus, another one than `before`.
    AXUIElementRef newFocus(const AXUIElementRef& before = nullptr) {
        AXUIElementRef element;
        EXPECT_TRUE(world->waitUntil(
            [&] {
                element = focusedElement();
                return element && element != before;
            },
            timeout));
        return element;
    }

    AXError write(const AXUIElementRef& element, const std::string& text) {
        return world->service().setAttributeValue(element, platform::axSelectedTextAttribute, text);
    }

    Seconds durationOfRefusedWrite(const AXUIElementRef& element) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_NE(write(element, "lost"), platform::axErrorSuccess);
        return std::chrono::steady_clock::now() - start;
    }

    testing::AssertionResult isRefusedAtOnce(const AXUIElementRef& element) {
        return isWithin(Seconds(0.05), [&] { return durationOfRefusedWrite(element); });
    }

    testing::AssertionResult becomes(AccessibilityTarget& target, const std::string& text) {
        return world->waitUntil([&] { return target.text() == text; }, timeout)
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "it holds \"" << target.text() << "\"";
    }

    std::unique_ptr<AccessibilityWorld> world = GetParam().make();
};

TEST_P(AccessibilityConformance, TextIsInsertedAtTheCaret) {
    const auto target = world->open({"Hello world", 5, 5});
    EXPECT_EQ(write(newFocus(), ", big"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "Hello, big world"));
}

TEST_P(AccessibilityConformance, TextGoesIntoAnEmptyField) {
    const auto target = world->open({});
    EXPECT_EQ(write(newFocus(), "First words."), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "First words."));
}

TEST_P(AccessibilityConformance, TheSelectionIsReplacedAndTheTextAroundItStays) {
    const auto target = world->open({"one two three", 4, 7});
    EXPECT_EQ(write(newFocus(), "2"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "one 2 three"));
}

TEST_P(AccessibilityConformance, PiecesFollowOneAnotherFromTheSelectionOn) {
    const auto target = world->open({"start middle end", 6, 12});
    const AXUIElementRef element = newFocus();
    EXPECT_EQ(write(element, "The quick"), platform::axErrorSuccess);
    EXPECT_EQ(write(element, " brown fox"), platform::axErrorSuccess);
    EXPECT_EQ(write(element, " jumps"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "start The quick brown fox jumps end"));
}

TEST_P(AccessibilityConformance, EveryScriptArrivesIntactAmongEveryScript) {
    const auto target = world->open({"😀 день 日本 👩‍💻 end", 8, 9});
    const AXUIElementRef element = newFocus();
    EXPECT_EQ(write(element, "Zażółć 😀"), platform::axErrorSuccess);
    EXPECT_EQ(write(element, " дом 漢字"), platform::axErrorSuccess);
    EXPECT_EQ(write(element, " 𝄞é🇩🇪"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(
        *target, "😀 день 日Zażółć 😀 дом 漢字 𝄞é🇩🇪 👩‍💻 end"));
}

TEST_P(AccessibilityConformance, AMovedCaretIsWhereTheNextPieceGoes) {
    const auto target = world->open({"abc", 3, 3});
    const AXUIElementRef element = newFocus();
    EXPECT_EQ(write(element, "DEF"), platform::axErrorSuccess);
    target->select(1, 1);
    EXPECT_EQ(write(element, "-"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "a-bcDEF"));
}

TEST_P(AccessibilityConformance, AnElementIsWrittenToAfterTheFocusHasMovedOn) {
    const auto target = world->open({"kept ", 5, 5});
    const AXUIElementRef element = newFocus();
    target->focusButton();
    EXPECT_NE(newFocus(element), nullptr);
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "kept text"));
}

TEST_P(AccessibilityConformance, AFieldThatLosesTheFocusToNothingIsNotFocusedAnyMore) {
    const auto target = world->open({"text ", 5, 5});
    EXPECT_NE(newFocus(), nullptr);
    target->focusNothing();
    EXPECT_TRUE(world->waitUntil([&] { return focusedElement() == nullptr; }, timeout));
    target->focusField();
    target->select(5, 5);
    EXPECT_EQ(write(newFocus(), "again"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "text again"));
}

TEST_P(AccessibilityConformance, AButtonRefusesText) {
    const auto target = world->open({.text = "as it was", .isButtonFocused = true});
    EXPECT_NE(write(newFocus(), "text"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "as it was");
}

TEST_P(AccessibilityConformance, AReadOnlyFieldRefusesText) {
    const auto target = world->open({.text = "as it was", .isReadOnly = true});
    EXPECT_NE(write(newFocus(), "text"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "as it was");
}

TEST_P(AccessibilityConformance, TheProgramInFrontHasTheFocusAndTheOtherOneIsStillWrittenTo) {
    const auto first = world->open({"first ", 6, 6});
    const AXUIElementRef firstElement = newFocus();
    const auto second = world->open({"second ", 7, 7});
    const AXUIElementRef secondElement = newFocus(firstElement);
    EXPECT_EQ(write(firstElement, "one"), platform::axErrorSuccess);
    EXPECT_EQ(write(secondElement, "two"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*first, "first one"));
    EXPECT_TRUE(becomes(*second, "second two"));
}

TEST_P(AccessibilityConformance, AProgramThatHasEndedRefusesText) {
    const auto target = world->open({"gone", 4, 4});
    const AXUIElementRef element = newFocus();
    target->die();
    const auto refuse = [&] { return durationOfRefusedWrite(element); };
    EXPECT_TRUE(isWithin(maxWrite + tolerance, refuse));
    EXPECT_TRUE(isWithin(maxWrite + tolerance, refuse));
}

TEST_P(AccessibilityConformance, AHungProgramCostsHalfASecondOnceAndTheNextProgramNothing) {
    std::unique_ptr<AccessibilityTarget> hung;
    AXUIElementRef element;
    EXPECT_TRUE(isWithin(maxWrite + tolerance, [&] {
        hung = world->open({"hung", 4, 4});
        element = newFocus(element);
        hung->hang();
        return durationOfRefusedWrite(element);
    }));
    EXPECT_TRUE(isRefusedAtOnce(element));

    const auto healthy = world->open({"healthy", 7, 7});
    EXPECT_EQ(write(newFocus(element), " text"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*healthy, "healthy text"));

    // What was typed instead must not arrive a second time.
    hung->goOn();
    hung->select(0, 0);
    EXPECT_EQ(hung->text(), "hung");
    EXPECT_TRUE(isRefusedAtOnce(element));
}

TEST_P(AccessibilityConformance, AProgramThatHungIsWrittenToAgainOnceItsFocusIsReadAgain) {
    const auto target = world->open({"hung", 4, 4});
    const AXUIElementRef element = newFocus();
    target->hang();
    EXPECT_NE(write(element, " lost"), platform::axErrorSuccess);
    target->goOn();
    target->select(4, 4);
    EXPECT_TRUE(isRefusedAtOnce(element));
    // A program that was only just getting the focus reports it again, as another element.
    EXPECT_EQ(write(newFocus(), " once"), platform::axErrorSuccess);
    EXPECT_TRUE(becomes(*target, "hung once"));
}

TEST_P(AccessibilityConformance, OnlyTheSelectedTextOfAnElementCanBeWritten) {
    const auto target = world->open({"as it was", 0, 9});
    const AXUIElementRef element = newFocus();
    EXPECT_NE(world->service().setAttributeValue(element, "AXValue", "text"),
              platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "as it was");
}

TEST_P(AccessibilityConformance, OnlyTheDesktopKnowsTheFocusedElement) {
    const auto target = world->open({});
    const AXUIElementRef element = newFocus();
    AXUIElementRef found;
    EXPECT_NE(
        world->service().copyAttributeValue(element, platform::axFocusedUIElementAttribute, &found),
        platform::axErrorSuccess);
}

INSTANTIATE_TEST_SUITE_P(Worlds, AccessibilityConformance, everyAccessibilityWorld(), nameOf);

}  // namespace

}  // namespace tarvik::tests
