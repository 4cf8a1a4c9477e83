// SPDX-License-Identifier: MIT

#include <memory>
#include <string>
#include <vector>

#include "tests/linux/accessibility/FakeProgramFixture.h"

namespace tarvik::tests {

namespace {

/// A document of a program like LibreOffice, which shows each paragraph page by page. A page has 12
/// UTF-16 units.
class AtspiPagedText : public AtspiFixture {
  protected:
    void SetUp() override { startService(); }

    /// A document with this text, and the caret at its end.
    void open(const std::string& text, std::vector<std::string> options = {}) {
        options.insert(options.end(), {"--text", text});
        target = std::make_unique<TargetProcess>("paged_target.py", std::move(options));
        processInFront = target->identifier();
        element = awaitFocus();
    }

    /// Writes into the widget that had the focus at first.
    void expectWritten(const std::string& text) {
        EXPECT_EQ(write(element, text), platform::axErrorSuccess) << text;
    }

    std::unique_ptr<TargetProcess> target;
    platform::AXUIElementRef element;
};

// What was taken back of such a text left its end on the next page.
TEST_F(AtspiPagedText, GoesOnOnTheNextPage) {
    open("begin end");
    EXPECT_EQ(target->command("caret 6"), "done");
    expectWritten("middle and more ");
    EXPECT_EQ(target->text(), "begin middle and more end");
    EXPECT_EQ(target->command("insertions"), "1");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiPagedText, IsWrittenWhereTheCaretIsWhenThatIsOnAnotherPage) {
    open("begin");
    for (const char* piece :
         {" one two three", " 😀", " four 👍🏽 five six seven eight", " nine"}) {
        expectWritten(piece);
    }
    EXPECT_EQ(target->text(), "begin one two three 😀 four 👍🏽 five six seven eight nine");
    EXPECT_EQ(target->command("insertions"), "4");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiPagedText, BeginsOnTheNextPageWhenTheCaretIsAtTheEndOfAPage) {
    open("twelve units");
    expectWritten(" and more");
    expectWritten(" units");
    EXPECT_EQ(target->text(), "twelve units and more units");
    EXPECT_EQ(target->command("insertions"), "2");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiPagedText, IsFoundWhenItsWidgetsScrollOutOfView) {
    open("begin", {"--scrolling"});
    expectWritten(" of a text over several pages 😀");
    expectWritten(" and its");
    expectWritten(" end");
    EXPECT_EQ(target->text(), "begin of a text over several pages 😀 and its end");
    EXPECT_EQ(target->command("insertions"), "3");
    EXPECT_TRUE(log.lines().empty());
}

// LibreOffice lays out many pages at once.
TEST_F(AtspiPagedText, IsFoundLateOfAProgramThatIsBusyWithItsPages) {
    canBeHeld = true;
    open("twelve units", {"--slow"});
    EXPECT_NE(write(element, " and more"), platform::axErrorSuccess);
    EXPECT_LT(lastDuration, half);
    EXPECT_TRUE(mainQueue.runUntil([this] { return arrivedUnits.has_value(); }));
    EXPECT_EQ(arrivedUnits, 9U);
    EXPECT_EQ(target->text(), "twelve units and more");
    EXPECT_TRUE(log.lines().empty());
}

// Typed, the text would be there twice.
TEST_F(AtspiPagedText, CountsAsWrittenWhenItsWidgetScrollsOutOfViewUnreported) {
    open("begin", {"--scrolling", "--quiet"});
    expectWritten(" of a text over several pages");
    EXPECT_EQ(target->text(), "begin of a text over several pages");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AtspiPagedText, FollowsTheCaretIntoAnotherParagraph) {
    open("first\nsecond");
    EXPECT_EQ(target->command("caret 5"), "done");
    expectWritten(" 😀");
    expectWritten("!");
    EXPECT_EQ(target->text(), "first 😀!\nsecond");
    EXPECT_EQ(target->command("insertions"), "2");
}

TEST_F(AtspiPagedText, DoesNotFollowTheFocusIntoAnotherDocument) {
    open("begin");
    EXPECT_EQ(target->command("leave"), "done");
    EXPECT_EQ(write(element, " text"), platform::axErrorNoValue);
    EXPECT_EQ(target->text(), "begin");
    EXPECT_EQ(target->command("read"), "");
}

// The same words may stand there from before.
TEST_F(AtspiPagedText, IsNotTakenForTheSameTextBeforeTheCaret) {
    open("no no no ", {"--lying"});
    EXPECT_NE(write(element, "no "), platform::axErrorSuccess);
    EXPECT_EQ(target->text(), "no no no ");
    EXPECT_TRUE(log.hasLineWith("does not insert what it says it inserts"));
}

}  // namespace

}  // namespace tarvik::tests
