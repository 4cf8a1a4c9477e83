// SPDX-License-Identifier: MIT

#include "tests/linux/portal/PortalFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using platform::eventInternalErr;
using platform::noErr;
using Manner = FakePortal::Manner;
using std::chrono::steady_clock;

/// A portal that denies, hangs, lies or dies.
class PortalFaultTest : public PortalFixture {
  protected:
    void openWith(Manner manner) {
        user.portal()->setManner(manner);
        open();
        addBoth();
    }
    // The application is as good as before the fault.
    void servesWithTheNextPortal() {
        user.portal().reset();
        recorder->events.clear();
        user.portal().emplace();
        ASSERT_TRUE(isBound(both));
        user.portal()->activate(holdName);
        user.portal()->deactivate(holdName);
        EXPECT_TRUE(becomes("P1R1"));
    }
};

TEST_F(PortalFaultTest, TheUserRefusesInTheDialog) {
    openWith(Manner::cancelled);
    EXPECT_TRUE(
        hasLine("a hotkey is lost: Alt+Space: the user has refused it in the desktop's "
                "dialog"));
    EXPECT_TRUE(hasLine("a hotkey is lost: Alt+Shift+Space: the user has refused it"));
    // Nobody asks twice.
    mainQueue.runFor(1500ms);
    EXPECT_EQ(user.portal()->dialogs(), 1);
    EXPECT_EQ(losses(), 2U);
    servesWithTheNextPortal();
}

TEST_F(PortalFaultTest, AnotherProgramHasOneOfThem) {
    user.portal()->take(holdName);
    openWith(Manner::properly);
    EXPECT_TRUE(hasLine("a hotkey is lost: Alt+Space: the desktop's portal does not give it"));
    EXPECT_EQ(losses(), 1U);
    user.portal()->activate(toggleName);
    EXPECT_TRUE(becomes("P2"));
}

TEST_F(PortalFaultTest, AReportedFailureBesideTheShortcutsIsNone) {
    openWith(Manner::reportsFailure);
    ASSERT_TRUE(isBound(both));
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    mainQueue.runFor(1500ms);
    EXPECT_EQ(losses(), 0U);
}

TEST_F(PortalFaultTest, TheShortcutsMayBeToldAfterAFailure) {
    openWith(Manner::tellsLater);
    ASSERT_TRUE(isBound(both));
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    mainQueue.runFor(1500ms);
    EXPECT_EQ(losses(), 0U);
}

TEST_F(PortalFaultTest, ASuccessWithoutShortcutsIsARefusal) {
    openWith(Manner::givesNothing);
    EXPECT_TRUE(hasLine("a hotkey is lost: Alt+Space: the desktop's portal does not give it"));
    servesWithTheNextPortal();
}

TEST_F(PortalFaultTest, TheUserTakesAHotkeyAwayInTheSettings) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal()->change({toggleName});
    EXPECT_TRUE(
        hasLine("a hotkey is lost: Alt+Space: it was taken away in the desktop's settings"));
    EXPECT_EQ(losses(), 1U);
}

TEST_F(PortalFaultTest, AnErrorIsTriedAFewTimes) {
    openWith(Manner::byErrors);
    EXPECT_TRUE(hasLine("the desktop's portal refuses"));
    EXPECT_TRUE(waitFor([&] { return losses() == 2; }));
    EXPECT_EQ(log.linesWith("and is asked again").size(), 1U);
    servesWithTheNextPortal();
}

TEST_F(PortalFaultTest, APortalThatMakesNoSession) {
    openWith(Manner::refusesSession);
    EXPECT_TRUE(waitFor([&] { return losses() == 2; }));
    EXPECT_TRUE(log.hasLineWith("the desktop's portal makes no session for shortcuts"));
    servesWithTheNextPortal();
}

TEST_F(PortalFaultTest, APortalThatNeverRespondsIsAskedAgain) {
    openWith(Manner::silent);
    EXPECT_TRUE(hasLine("the desktop's portal does not answer, and is asked again"));
    user.portal()->setManner(Manner::properly);
    EXPECT_TRUE(isBound(both));
    EXPECT_EQ(losses(), 0U);
}

TEST_F(PortalFaultTest, WhatNobodyUnderstandsIsARefusal) {
    openWith(Manner::garbage);
    EXPECT_TRUE(waitFor([&] { return losses() == 2; }));
    EXPECT_TRUE(log.hasLineWith("the desktop's portal answers what nobody understands"));
    servesWithTheNextPortal();
}

TEST_F(PortalFaultTest, APortalThatHangsKeepsNobodyWaiting) {
    user.portal()->setManner(Manner::later);
    const auto start = steady_clock::now();
    open();
    EXPECT_LT(steady_clock::now() - start, second);
    EXPECT_EQ(input->refusal(), std::nullopt);
    EXPECT_FALSE(input->hasAnswered());
    const auto registration = steady_clock::now();
    addBoth();
    EXPECT_LT(steady_clock::now() - registration, second);
    EXPECT_EQ(losses(), 0U);
    user.portal()->setManner(Manner::properly);
    EXPECT_TRUE(isBound(both));
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
}

TEST_F(PortalFaultTest, TheEndDoesNotWaitForAPortalThatHangs) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal()->setManner(Manner::later);
    const auto start = steady_clock::now();
    close();
    EXPECT_LT(steady_clock::now() - start, second);
}

TEST_F(PortalFaultTest, APortalThatDiesEndsTheHoldAndTheNextOneIsAsked) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    user.portal().reset();
    EXPECT_TRUE(becomes("P1R1"));
    EXPECT_TRUE(hasLine("the desktop's portal is gone, and is asked again"));
    servesWithTheNextPortal();
    EXPECT_EQ(log.linesWith("and is asked again").size(), 1U);
    EXPECT_EQ(losses(), 0U);
}

TEST_F(PortalFaultTest, APortalThatStaysAwayIsReportedOnce) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal().reset();
    EXPECT_TRUE(waitFor([&] { return losses() == 2; }));
    EXPECT_EQ(log.linesWith("and is asked again").size(), 1U);
    user.portal().emplace();
    EXPECT_TRUE(isBound(both));
}

TEST_F(PortalFaultTest, ASessionThatThePortalClosesIsMadeAgain) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    user.portal()->closeSession();
    EXPECT_TRUE(becomes("P1R1"));
    EXPECT_TRUE(isBound(both));
    EXPECT_EQ(losses(), 0U);
}

TEST_F(PortalFaultTest, SaysThatTheBusIsGone) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal().reset();
    user.endBus();
    EXPECT_TRUE(hasLine("the session bus is gone"));
    EXPECT_EQ(input->registerHotKey(9, platform::spaceKeyCode, hold), eventInternalErr);
}

TEST_F(PortalFaultTest, TheNextBusAndItsPortalServe) {
    openWith(Manner::properly);
    ASSERT_TRUE(isBound(both));
    user.portal()->activate(holdName);
    EXPECT_TRUE(becomes("P1"));
    user.portal().reset();
    user.endBus();
    EXPECT_TRUE(becomes("P1R1"));
    user.startBus();
    EXPECT_TRUE(hasLine("the session bus is back"));
    servesWithTheNextPortal();
    EXPECT_EQ(losses(), 0U);
}

}  // namespace

}  // namespace tarvik::tests
