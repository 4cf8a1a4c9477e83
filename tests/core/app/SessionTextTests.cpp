// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

/// The insertion of a session's transcripts.
class SessionText : public testing::Test {
  protected:
    SessionText() {
        app.platform.workspace().setFrontmostProcess(ApplicationUnderTest::editor);
        app.launchAndSettle();
    }

    /// Starts a session and stops after the turn that receives the first piece, "hello". The next
    /// turn inserts the piece.
    void receiveWithoutInserting() {
        app.platform.webSockets().setAutomatic(false);
        app.pressHold();
        app.socket().open();
        app.socket().deliverText(simulated::transcriptJson("hello", true));
        app.platform.webSockets().runDelegateQueues();
        // The connection opens in an earlier turn.
        ASSERT_TRUE(app.platform.time().runOne());
        ASSERT_TRUE(app.platform.time().runOne());
    }

    ApplicationUnderTest app;
};

TEST_F(SessionText, FinalPiecesAreJoinedAndInsertedWithASpace) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    app.sayFinal("hello");
    app.sayFinal("world");
    EXPECT_EQ(element->attempts, Lines({"hello", " world"}));
}

TEST_F(SessionText, InterimResultsAreIgnored) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    app.sayInterim("hel");
    EXPECT_TRUE(element->attempts.empty());
    EXPECT_TRUE(app.platform.keyboardEvents().posts.empty());
}

TEST_F(SessionText, StopInsertsNothing) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    app.sayFinal("hello");
    app.releaseHold();
    app.platform.advance(Seconds(10));
    EXPECT_EQ(element->attempts, Lines({"hello"}));
}

TEST_F(SessionText, TextIsKeptAfterTheEndUntilTheNextStart) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    app.sayFinal("hello");
    app.releaseHold();
    app.platform.advance(Seconds(1));
    app.sayFinal("world");
    app.startStreaming();
    app.sayFinal("again");
    EXPECT_EQ(element->attempts, Lines({"hello", " world", "again"}));
}

TEST_F(SessionText, PieceThatArrivesASecondAfterTheStopIsInsertedIntoTheOldTarget) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    app.sayFinal("hello");
    app.releaseHold();
    app.platform.accessibility().focusNewElement();
    app.platform.advance(Seconds(1));
    app.sayFinal("world");
    EXPECT_EQ(element->text, "hello world");
}

TEST_F(SessionText, LatePieceGoesToTheTargetOfTheNewRecording) {
    const auto oldElement = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    auto& oldSocket = app.socket();
    app.sayFinal("one");
    app.releaseHold();
    app.platform.advance(Seconds(0.5));
    const auto newElement = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    oldSocket.deliverText(simulated::transcriptJson("two", true));
    app.platform.runUntilIdle();
    app.sayFinal("three");
    oldSocket.deliverText(simulated::transcriptJson("four", true));
    app.platform.runUntilIdle();
    EXPECT_EQ(oldElement->text, "one");
    EXPECT_EQ(newElement->attempts, Lines({"two", " three", " four"}));
}

TEST_F(SessionText, WithoutApplicationAndElementTheTextGoesToTheKeyboardFocus) {
    app.platform.workspace().setFrontmostProcess(std::nullopt);
    app.startStreaming();
    app.sayFinal("hello");
    EXPECT_EQ(app.platform.keyboardEvents().typed(std::nullopt), u"hello");
}

TEST_F(SessionText, WithoutAnElementTheTextIsTypedIntoTheFrontmostProcess) {
    app.startStreaming();
    app.platform.workspace().setFrontmostProcess(ApplicationUnderTest::editor + 1);
    app.sayFinal("hello");
    app.sayFinal("world");
    EXPECT_EQ(app.platform.keyboardEvents().typed(ApplicationUnderTest::editor), u"hello world");
    EXPECT_EQ(app.platform.keyboardEvents().typed(ApplicationUnderTest::editor + 1), u"");
}

TEST_F(SessionText, ElementThatComesWithAnErrorIsNotUsed) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.platform.accessibility().focusStatus = platform::axErrorNoValue;
    app.startStreaming();
    app.sayFinal("hello");
    EXPECT_TRUE(element->attempts.empty());
    EXPECT_EQ(app.platform.keyboardEvents().typed(ApplicationUnderTest::editor), u"hello");
}

TEST_F(SessionText, ElementOfTheStartIsUsedAfterTheFocusHasMoved) {
    const auto element = app.platform.accessibility().focusNewElement();
    app.startStreaming();
    const auto other = app.platform.accessibility().focusNewElement();
    app.sayFinal("hello");
    EXPECT_EQ(element->text, "hello");
    EXPECT_TRUE(other->attempts.empty());
}

TEST_F(SessionText, PieceIsInsertedInALaterTurn) {
    const auto element = app.platform.accessibility().focusNewElement();
    receiveWithoutInserting();
    EXPECT_TRUE(element->attempts.empty());
    ASSERT_TRUE(app.platform.time().runOne());
    EXPECT_EQ(element->attempts, Lines({"hello"}));
}

TEST_F(SessionText, WaitingPieceUsesTheTargetAtItsInsertion) {
    const auto oldElement = app.platform.accessibility().focusNewElement();
    receiveWithoutInserting();
    const auto newElement = app.platform.accessibility().focusNewElement();
    app.delegate->stopRecording();
    app.delegate->startRecording();
    app.platform.runUntilIdle();
    EXPECT_TRUE(oldElement->attempts.empty());
    EXPECT_EQ(newElement->text, "hello");
}

TEST_F(SessionText, WaitingPieceIsInsertedAfterTheDelegateWasReleased) {
    const auto element = app.platform.accessibility().focusNewElement();
    receiveWithoutInserting();
    app.delegate->applicationWillTerminate();
    app.delegate.reset();
    app.platform.runUntilIdle();
    EXPECT_EQ(element->text, "hello");
}

}  // namespace
}  // namespace tarvik
