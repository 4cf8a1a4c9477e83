// SPDX-License-Identifier: MIT

#include <cstddef>
#include <string>

#include "tests/linux/accessibility/FakeProgramFixture.h"

namespace tarvik::tests {

namespace {

/// Programs that reply too late, where typed text can wait for their replies.
class AtspiPendingWrite : public FakeProgramFixture {
  protected:
    void SetUp() override {
        canBeHeld = true;
        FakeProgramFixture::SetUp();
    }
    /// Writes, while the program does not reply in time.
    void writeLate(const std::string& text) {
        EXPECT_NE(write(element, text), platform::axErrorSuccess);
        EXPECT_LT(lastDuration, half);
        EXPECT_EQ(heldFor, target->identifier());
    }
    /// How much of the held text is dropped once the program goes on.
    std::size_t unitsArrivedAfterWaking() {
        EXPECT_EQ(target->command("wake"), "done");
        EXPECT_TRUE(mainQueue.runUntil([this] { return arrivedUnits.has_value(); }));
        EXPECT_EQ(target->command("settle"), "done");
        return arrivedUnits.value_or(0);
    }
};

TEST_F(AtspiPendingWrite, StaysWhenItHasArrivedAndIsNotTyped) {
    open("silent-on-insertion", "begin end", {"--select", "6:6"});
    writeLate("middle ");
    EXPECT_EQ(unitsArrivedAfterWaking(), 7U);
    EXPECT_EQ(target->command("behave honest"), "done");
    EXPECT_EQ(write(element, "and "), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin middle and end");
}

TEST_F(AtspiPendingWrite, IsTypedWhenTheProgramRefusesTheText) {
    open("silent-and-refusing", "as it was");
    writeLate(" text");
    EXPECT_EQ(unitsArrivedAfterWaking(), 0U);
    EXPECT_EQ(target->text(), "as it was");
}

TEST_F(AtspiPendingWrite, IsTypedWhenTheProgramTakesPartOfTheText) {
    open("silent-and-short", "as it was");
    writeLate(" text");
    EXPECT_EQ(unitsArrivedAfterWaking(), 0U);
    EXPECT_EQ(textAfterWaking(), "as it was");
}

// The program confirms first, as other programs do in time.
TEST_F(AtspiPendingWrite, StaysWhenItIsCarriedOutALittleAfterTheLateReply) {
    open("silent-and-late", "begin end", {"--select", "6:6"});
    writeLate("middle ");
    EXPECT_EQ(unitsArrivedAfterWaking(), 7U);
    EXPECT_EQ(target->text(), "begin middle end");
}

TEST_F(AtspiPendingWrite, LeavesNothingInAProgramThatCountsUtf16UnitsAndTakesAPart) {
    open("silent-and-utf16-short", "begin end", {"--select", "6:6"});
    writeLate("😀😀😀😀");
    EXPECT_EQ(unitsArrivedAfterWaking(), 0U);
    EXPECT_EQ(textAfterWaking(), "begin end");
}

// LibreOffice loads a font at the first emoji, which takes half a second.
TEST_F(AtspiPendingWrite, StaysInAProgramThatTurnsOutToCountUtf16Units) {
    open("silent-and-utf16", "begin ");
    writeLate("😀 👩🏿‍💻 end");
    EXPECT_EQ(unitsArrivedAfterWaking(), 14U);
    EXPECT_EQ(target->text(), "begin 😀 👩🏿‍💻 end");
}

TEST_F(AtspiPendingWrite, BeginsOnceABusyProgramRepliesToQueriesAgain) {
    open("silent-on-query", "begin end", {"--select", "6:6"});
    writeLate("middle ");
    EXPECT_EQ(insertions(), "0");
    EXPECT_EQ(unitsArrivedAfterWaking(), 7U);
    EXPECT_EQ(target->text(), "begin middle end");
    EXPECT_EQ(write(element, "and "), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "begin middle and end");
}

TEST_F(AtspiPendingWrite, IsTypedWhenTheProgramStaysBusy) {
    open("silent-on-query", "as it was");
    writeLate(" text");
    EXPECT_TRUE(mainQueue.runUntil([this] { return arrivedUnits.has_value(); }));
    EXPECT_EQ(arrivedUnits, 0U);
    EXPECT_EQ(textAfterWaking(), "as it was");
    EXPECT_EQ(insertions(), "0");
}

TEST_F(AtspiPendingWrite, IsTypedWhenTheProgramEnds) {
    open("silent-on-insertion", "as it was");
    writeLate(" text");
    target->command("quit");
    EXPECT_TRUE(mainQueue.runUntil([this] { return arrivedUnits.has_value(); }));
    EXPECT_EQ(arrivedUnits, 0U);
}

}  // namespace

}  // namespace tarvik::tests
