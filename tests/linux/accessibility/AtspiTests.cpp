// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/linux/accessibility/FakeProgramFixture.h"
#include "tests/linux/loop/ThreadShortage.h"

namespace tarvik::tests {

namespace {

using platform::AXUIElementRef;

using AtspiAccessibility = FakeProgramFixture;

TEST_F(AtspiAccessibility, AnHonestProgramTakesTheText) {
    open("honest", "one two", {"--select", "4:7"});
    EXPECT_EQ(write(element, "2"), platform::axErrorSuccess);
    EXPECT_EQ(write(element, " 3"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "one 2 3");
    EXPECT_TRUE(log.lines().empty());
}

// Or the pieces would arrive in another order than they were said in.
TEST_F(AtspiAccessibility, AProgramThatIsBeingTypedIntoIsNotWrittenTo) {
    open("honest", "one");
    typedInto = processInFront;
    EXPECT_EQ(write(element, " three"), platform::axErrorCannotComplete);
    EXPECT_LT(lastDuration, atOnce);
    typedInto.reset();
    EXPECT_EQ(write(element, " two"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "one two");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiAccessibility, AProgramThatClaimsWhatItDidNotDoIsBelievedOnlyOnce) {
    open("liar", "as it was");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, half);
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    EXPECT_EQ(insertions(), "1");
    EXPECT_EQ(target->text(), "as it was");
    EXPECT_TRUE(log.hasLineWith("does not insert what it says it inserts"));
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(AtspiAccessibility, AFieldThatLiesDoesNotSpoilTheOtherFieldsOfItsProgram) {
    open("liar", "as it was");
    const AXUIElementRef second = focusSecondField();
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(write(second, "text"), platform::axErrorSuccess);
    EXPECT_EQ(target->command("read"), "text");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
}

TEST_F(AtspiAccessibility, AFieldThatLiedIsBelievedAgainInTheNextRecording) {
    open("liar", "one");
    EXPECT_NE(write(element, " two"), platform::axErrorSuccess);
    EXPECT_EQ(target->command("behave honest"), "done");
    EXPECT_EQ(focusedElement(), element);
    EXPECT_EQ(write(element, " two"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "one two");
}

TEST_F(AtspiAccessibility, AProgramThatFallsSilentIsRefusedWithAllItsFields) {
    open("silent-on-insertion", "as it was");
    const AXUIElementRef second = focusSecondField();
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_NE(write(second, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    EXPECT_EQ(target->command("read"), "");
}

TEST_F(AtspiAccessibility, AProgramThatWasTooSlowOnceIsAskedAgainInTheNextRecording) {
    open("slow", "one");
    EXPECT_NE(write(element, " two"), platform::axErrorSuccess);
    EXPECT_EQ(target->command("behave honest"), "done");
    EXPECT_NE(write(element, " two"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    EXPECT_EQ(focusedElement(), element);
    EXPECT_EQ(write(element, " two"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "one two");
}

// The late undo of the first text would hit the second one.
TEST_F(AtspiAccessibility, AProgramThatIsStillSilentIsNotWrittenToBeforeTheUndo) {
    open("silent-on-insertion", "one");
    EXPECT_NE(write(element, " lost"), platform::axErrorSuccess);
    EXPECT_EQ(focusedElement(), element);
    EXPECT_NE(write(element, " two"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    EXPECT_EQ(target->command("behave honest"), "done");
    EXPECT_EQ(target->command("wake"), "done");
    EXPECT_TRUE(becomesTrue([this] { return write(element, " two") == platform::axErrorSuccess; },
                            timeout));
    EXPECT_EQ(target->text(), "one two");
}

TEST_F(AtspiAccessibility, AnotherProcessOfTheSameProgramIsBelievedAgain) {
    open("liar", "");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    open("honest", "");
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "text");
}

TEST_F(AtspiAccessibility, ATextThatIsTakenOverALittleLaterIsWaitedFor) {
    open("late", "late ");
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "late text");
}

TEST_F(AtspiAccessibility, AProgramThatSaysNoIsAskedAgainForTheNextPiece) {
    open("refusing", "as it was");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(insertions(), "2");
    EXPECT_EQ(target->text(), "as it was");
}

TEST_F(AtspiAccessibility, AProgramThatFallsSilentOverATextKeepsNothingOfItWhenItWakesUp) {
    open("silent-on-insertion", "as it was");
    EXPECT_NE(write(element, " text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, half);
    EXPECT_NE(write(element, " text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    EXPECT_EQ(textAfterWaking(), "as it was");
    EXPECT_EQ(insertions(), "1");
}

// The text shows nothing of the program's unit.
TEST_F(AtspiAccessibility, AProgramThatFallsSilentAndCountsUtf16UnitsKeepsNothingOfTheText) {
    open("silent-and-utf16-unreadable", "begin end", {"--select", "6:6"});
    EXPECT_NE(write(element, "😀😀"), platform::axErrorSuccess);
    EXPECT_EQ(textAfterWaking(), "begin end");
}

TEST_F(AtspiAccessibility, WithoutAThreadThereIsNoneAndOneLineSaysWhy) {
    open("honest", "as it was");
    service.reset();
    {
        const ThreadShortage shortage;
        startService();
    }
    bool isKnown = false;
    service->whenFirstKnown([&] { isKnown = true; });
    EXPECT_TRUE(isKnown);
    EXPECT_FALSE(service->isProcessTrustedWithOptions(true));
    AXUIElementRef focus;
    EXPECT_EQ(copyFocus(&focus), platform::axErrorAPIDisabled);
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    service.reset();
    EXPECT_EQ(log.lines(), std::vector<std::string>{"TarvikDictate: no thread for accessibility: "
                                                    "Resource temporarily unavailable"});
    EXPECT_EQ(target->text(), "as it was");
}

class AtspiProgramThatFellSilent : public AtspiAccessibility,
                                   public testing::WithParamInterface<const char*> {};

TEST_P(AtspiProgramThatFellSilent, HasOnlyWhatItHadWhenItWakesUp) {
    open(GetParam(), "begin end", {"--select", "6:6"});
    EXPECT_NE(write(element, "middle "), platform::axErrorSuccess);
    EXPECT_EQ(textAfterWaking(), "begin end");
}

TEST_P(AtspiProgramThatFellSilent, HasWhatWasTypedMeanwhileOnce) {
    open(GetParam(), "begin end", {"--select", "6:6"});
    EXPECT_NE(write(element, "middle "), platform::axErrorSuccess);
    EXPECT_EQ(target->command("type middle "), "done");
    EXPECT_EQ(textAfterWaking(), "begin middle end");
}

INSTANTIATE_TEST_SUITE_P(AndThen, AtspiProgramThatFellSilent,
                         testing::Values("silent-on-insertion", "silent-and-refusing",
                                         "silent-and-short"));

TEST_F(AtspiAccessibility, AProgramThatFallsSilentOverASelectionHasItReplacedByWhatIsTypedLater) {
    open("silent-on-deletion", "one two three", {"--select", "4:7"});
    EXPECT_NE(write(element, "2"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, half);
    EXPECT_EQ(textAfterWaking(), "one  three");
    EXPECT_EQ(target->command("type 2"), "done");
    EXPECT_EQ(target->text(), "one 2 three");
    EXPECT_EQ(insertions(), "0");
}

TEST_F(AtspiAccessibility, AProgramThatFallsSilentOverASelectionKeepsWhatWasTypedInItsPlace) {
    open("silent-on-deletion", "one two three", {"--select", "4:7"});
    EXPECT_NE(write(element, "2"), platform::axErrorSuccess);
    EXPECT_EQ(target->command("type 2"), "done");
    EXPECT_EQ(textAfterWaking(), "one 2 three");
    EXPECT_EQ(target->command("type , 2 1/2"), "done");
    EXPECT_EQ(target->text(), "one 2, 2 1/2 three");
}

TEST_F(AtspiAccessibility, AProgramThatDiesOverATextRefusesItAndTheNextProgramTakesIt) {
    open("dying-on-insertion", "");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, half);
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, atOnce);
    open("honest", "");
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
}

TEST_F(AtspiAccessibility, AProgramThatIsTooSlowIsNotSentTheText) {
    open("slow", "as it was");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, half);
    EXPECT_EQ(insertions(), "0");
    EXPECT_EQ(target->text(), "as it was");
}

TEST_F(AtspiAccessibility, AFieldThatTakesOnlyAPartIsLeftWithoutIt) {
    open("short", "begin end", {"--select", "6:6"});
    EXPECT_NE(write(element, "middle"), platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([this] { return target->text() == "begin end"; }, timeout))
        << target->text();
}

TEST_F(AtspiAccessibility, AFieldThatMakesRoomAtItsEndGetsItsEndBack) {
    open("cutting", "begin end", {"--select", "6:6"});
    EXPECT_NE(write(element, "middle"), platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([this] { return target->text() == "begin end"; }, timeout))
        << target->text();
    EXPECT_EQ(insertions(), "2");
}

TEST_F(AtspiAccessibility, AFieldOfAProgramThatCountsUtf16UnitsGetsItsEndBack) {
    open("utf16-cutting", "begin 😀 end", {"--select", "6:6"});
    EXPECT_NE(write(element, "middle"), platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([this] { return target->text() == "begin 😀 end"; }, timeout))
        << target->text();
}

TEST_F(AtspiAccessibility, AFieldThatMakesALittleRoomAtItsEndGetsItsEndBack) {
    open("cutting", "begin end", {"--select", "2:5"});
    EXPECT_NE(write(element, "middle"), platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([this] { return target->text() == "be end"; }, timeout))
        << target->text();
}

TEST_F(AtspiAccessibility, AFieldOfASlowProgramGetsItsEndBackBeforeTheTimeIsUp) {
    open("cutting-slowly", "begin end", {"--select", "6:6"});
    EXPECT_NE(write(element, "middle"), platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([this] { return target->text() == "begin end"; }, timeout))
        << target->text();
}

TEST_F(AtspiAccessibility, AFieldThatShowsSomethingElseIsLeftWithoutIt) {
    open("garbling", "begin end", {"--select", "6:6"});
    EXPECT_EQ(write(element, "of the "), platform::axErrorSuccess);
    EXPECT_NE(write(element, "middle 😀 "), platform::axErrorSuccess);
    // What is typed now does not meet the deletion of what was inserted.
    EXPECT_EQ(target->text(), "begin of the end");
    EXPECT_EQ(write(element, "bitter "), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin of the bitter end");
    EXPECT_NE(write(element, "😀"), platform::axErrorSuccess);
    // One line tells that texts are typed, however many they are.
    EXPECT_TRUE(log.hasLineWith("takes another text than it is sent; the text is typed"));
    EXPECT_EQ(log.lines().size(), 1U);
}

// The bus refuses the questions to a program that has just ended.
TEST_F(AtspiAccessibility, AProgramThatHasJustEndedRefusesNothing) {
    for (int time = 0; time < 10; ++time) {
        open("honest", "");
        target->kill();
        EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    }
    EXPECT_FALSE(log.hasLineWith("the text is typed"));
}

// LibreOffice does that, and its toolkit is called like the one that counts characters.
TEST_F(AtspiAccessibility, AProgramThatCountsUtf16UnitsKeepsWhatItInserted) {
    open("utf16", "begin 🎉 end", {"--select", "9:9"});
    EXPECT_EQ(write(element, "of 😀 the 🎉"), platform::axErrorSuccess);
    EXPECT_EQ(write(element, " bitter 😀"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin 🎉 of 😀 the 🎉 bitter 😀end");
    EXPECT_EQ(insertions(), "2");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiAccessibility, AFieldThatHidesItsTextIsBelievedByItsCount) {
    open("masking", "begin end", {"--select", "6:6"});
    EXPECT_EQ(write(element, "middle 😀 "), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin middle 😀 end");
    EXPECT_EQ(insertions(), "1");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiAccessibility, AFieldThatCannotBeReadIsBelievedByItsCount) {
    open("unreadable", "begin end", {"--select", "6:6"});
    EXPECT_EQ(write(element, "middle 😀 "), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin middle 😀 end");
}

TEST_F(AtspiAccessibility, ASelectionThatStaysKeepsTheTextOut) {
    open("undeletable", "one two", {"--select", "4:7"});
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(insertions(), "0");
    EXPECT_EQ(target->text(), "one two");
}

TEST_F(AtspiAccessibility, NonsensicalNumbersAreARefusal) {
    open("nonsense", "as it was");
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "as it was");
}

TEST_F(AtspiAccessibility, AProgramOfAnUnknownToolkitIsNotGuessedAt) {
    open("honest", "as it was", {"--toolkit", ""});
    EXPECT_NE(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(insertions(), "0");
}

TEST_F(AtspiAccessibility, ATextThatNoMessageCanCarryChangesNothing) {
    open("honest", "one two", {"--select", "4:7"});
    EXPECT_NE(write(element, "\xC3("), platform::axErrorSuccess);
    EXPECT_NE(write(element, std::string("a\0b", 3)), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "one two");
}

TEST_F(AtspiAccessibility, AFocusThatIsLostWithoutAWindowIsRemembered) {
    open("honest", "");
    EXPECT_EQ(target->command("blur"), "done");
    // The program has answered since it said so, and what it says arrives in order.
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(focusedElement(), element);
}

TEST_F(AtspiAccessibility, AFocusThatIsLostInsideTheWindowIsForgotten) {
    open("honest", "", {"--window"});
    EXPECT_EQ(target->command("lose"), "done");
    EXPECT_TRUE(becomesTrue([this] { return focusedElement() == nullptr; }, timeout));
}

TEST_F(AtspiAccessibility, AFocusThatIsHiddenByAKeyGrabIsRemembered) {
    open("honest", "", {"--window"});
    EXPECT_EQ(target->command("grab"), "done");
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    // The program has replied to what the service asked because of the event.
    EXPECT_EQ(write(element, " and more"), platform::axErrorSuccess);
    EXPECT_EQ(focusedElement(), element);
}

// LibreOffice does that for the pane around the document.
TEST_F(AtspiAccessibility, AFocusThatIsReportedForTheWrongWidgetIsNotBelieved) {
    open("honest", "", {"--window"});
    EXPECT_EQ(target->command("pane"), "done");
    // The program has replied since it reported the focus.
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    EXPECT_TRUE(becomesTrue([this] { return focusedElement() == element; }, timeout));
}

TEST_F(AtspiAccessibility, AProgramInTheBackgroundDoesNotGetTheFocusByClaimingIt) {
    TargetProcess background("fake_target.py", {});
    open("honest", "");
    EXPECT_EQ(background.command("focus"), "done");
    EXPECT_EQ(focusedElement(), element);
    EXPECT_EQ(write(element, "text"), platform::axErrorSuccess);
    EXPECT_EQ(focusedElement(), element);
    EXPECT_EQ(background.text(), "");
}

TEST_F(AtspiAccessibility, AProgramInFrontThatSaysNothingHasNoFocus) {
    open("honest", "");
    processInFront = 1;
    AXUIElementRef found;
    EXPECT_EQ(copyFocus(&found), platform::axErrorNoValue);
    EXPECT_EQ(found, nullptr);
}

}  // namespace

}  // namespace tarvik::tests
