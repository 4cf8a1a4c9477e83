// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/speech/ClientUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;
using Flags = std::vector<bool>;

constexpr auto closeStream = R"({"type":"CloseStream"})";

TEST(Client, FinishBeforeTheOpeningCompletesAtOnceAndLeavesTheConnectPending) {
    ClientUnderTest test;
    test.connect();
    test.finish();
    EXPECT_EQ(test.events, Lines({"finished"}));
    test.open();
    EXPECT_EQ(test.connects, Flags({true}));
    test.platform.advance(Seconds(10));
    EXPECT_TRUE(test.task().sentTexts().empty());
    EXPECT_TRUE(test.task().cancels().empty());
    EXPECT_EQ(test.events, Lines({"finished", "connected"}));
}

TEST(Client, FinishBeforeTheOpeningLeavesTheConnectToItsDeadline) {
    ClientUnderTest test;
    test.connect();
    test.finish();
    test.platform.advance(Seconds(5));
    EXPECT_EQ(test.events, Lines({"finished", "not connected"}));
}

TEST(Client, FinishWithoutAConnectCompletesAtOnce) {
    ClientUnderTest test;
    test.finish();
    EXPECT_EQ(test.events, Lines({"finished"}));
}

TEST(Client, FinishSendsTheCloseMessageAsText) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish();
    EXPECT_EQ(test.task().sentTexts(), Lines({closeStream}));
    EXPECT_EQ(test.count("finished"), 0);
}

TEST(Client, ServiceThatClosesAfterHalfASecondCompletesTheFinishAtOnce) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.client->finish([&] {
        EXPECT_TRUE(test.platform.time().isRunningBlock());
        test.events.emplace_back("finished");
    });
    test.platform.advance(Seconds(0.5));
    test.task().notifyClose();
    test.platform.runUntilIdle();
    EXPECT_EQ(test.count("finished"), 1);
    test.client->send("ab");
    EXPECT_TRUE(test.task().sentData().empty());
    EXPECT_TRUE(test.task().cancels().empty());
    test.platform.advance(Seconds(1.5));
    EXPECT_EQ(test.task().cancels(), std::vector<int>({1001}));
    EXPECT_EQ(test.count("finished"), 1);
}

TEST(Client, ServiceThatNeverClosesIsCancelledAfterTwoSeconds) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish();
    test.platform.advance(Seconds(1.99));
    EXPECT_TRUE(test.task().cancels().empty());
    EXPECT_EQ(test.count("finished"), 0);
    test.platform.advance(Seconds(0.01));
    EXPECT_EQ(test.task().cancels(), std::vector<int>({1001}));
    EXPECT_EQ(test.count("finished"), 1);
    test.client->send("ab");
    EXPECT_TRUE(test.task().sentData().empty());
    // The stream is closed, so another finish completes at once.
    test.finish("again");
    EXPECT_EQ(test.count("again"), 1);
}

TEST(Client, ServiceThatNeverClosesIsCancelledBeforeTheFinishCompletes) {
    ClientUnderTest test;
    test.connectAndOpen();
    std::vector<int> cancelsSoFar;
    test.client->finish([&] { cancelsSoFar = test.task().cancels(); });
    test.platform.advance(Seconds(2));
    EXPECT_EQ(cancelsSoFar, std::vector<int>({1001}));
}

TEST(Client, AudioWhileClosingIsStillSent) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish();
    test.client->send("ab");
    EXPECT_EQ(test.task().sentData(), Lines({"ab"}));
}

TEST(Client, FinishAfterTheServiceHasClosedCompletesAtOnce) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.close();
    test.finish();
    EXPECT_EQ(test.count("finished"), 1);
    EXPECT_TRUE(test.task().sentTexts().empty());
    test.platform.advance(Seconds(10));
    EXPECT_TRUE(test.task().cancels().empty());
}

TEST(Client, FinishAfterTheOpenDeadlineCompletesAtOnce) {
    ClientUnderTest test;
    test.connect();
    test.platform.advance(Seconds(5));
    test.finish();
    EXPECT_EQ(test.count("finished"), 1);
    EXPECT_TRUE(test.task().sentTexts().empty());
}

TEST(Client, FinishingTwiceSendsTwoCloseMessagesAndCompletesOnlyTheSecond) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish("first");
    test.platform.advance(Seconds(1));
    test.finish("second");
    EXPECT_EQ(test.task().sentTexts(), Lines({closeStream, closeStream}));
    // The second completion is called at the deadline of the first finish.
    test.platform.advance(Seconds(1));
    EXPECT_EQ(test.count("second"), 1);
    EXPECT_EQ(test.task().cancels(), std::vector<int>({1001}));
    test.platform.advance(Seconds(10));
    EXPECT_EQ(test.count("first"), 0);
    EXPECT_EQ(test.count("second"), 1);
    EXPECT_EQ(test.task().cancels(), std::vector<int>({1001}));
}

TEST(Client, FinishingTwiceCompletesTheSecondOnceWhenTheServiceCloses) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish("first");
    test.finish("second");
    test.close();
    test.platform.advance(Seconds(10));
    EXPECT_EQ(test.count("first"), 0);
    EXPECT_EQ(test.count("second"), 1);
}

TEST(Client, UnsentCloseMessageIsNotReportedAndTheDeadlineEndsTheStream) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.task().failNextSend({32, "Broken pipe"});
    test.finish();
    test.platform.advance(Seconds(1.9));
    EXPECT_TRUE(test.errors.empty());
    test.platform.advance(Seconds(0.1));
    EXPECT_EQ(test.count("finished"), 1);
}

TEST(Client, OpenDeadlineWhileOpenOrClosingDoesNothing) {
    ClientUnderTest test;
    test.connect();
    test.platform.advance(Seconds(4));
    test.open();
    test.finish();
    test.platform.advance(Seconds(1));
    EXPECT_EQ(test.connects, Flags({true}));
    EXPECT_TRUE(test.platform.log().lines().empty());
    test.client->send("ab");
    EXPECT_EQ(test.task().sentData().size(), 1U);
}

TEST(Client, CloseOfAnOpenStreamIsNeitherLoggedNorReported) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.task().notifyClose(1011, "net0001");
    test.platform.runUntilIdle();
    EXPECT_EQ(test.events, Lines({"connected"}));
    EXPECT_TRUE(test.platform.log().lines().empty());
}

TEST(Client, CloseBringsTheConnectCompletionBeforeTheFinishCompletion) {
    ClientUnderTest test;
    test.platform.webSockets().setAutomatic(false);
    test.connect();
    test.task().open();
    test.platform.webSockets().runDelegateQueues();
    test.platform.runUntilIdle();
    // The completion of a second connect is pending while the client is open.
    test.client->connect([&](bool isOpen) {
        test.events.push_back(isOpen ? "connected again" : "not connected again");
    });
    test.finish();
    test.platform.webSockets().lastTask().notifyClose();
    test.platform.webSockets().runDelegateQueues();
    test.platform.runUntilIdle();
    EXPECT_EQ(test.events, Lines({"connected", "not connected again", "finished"}));
}

TEST(Client, SecondConnectDropsTheFirstCompletionUncalledAndCancelsNothing) {
    ClientUnderTest test;
    test.connect();
    auto& firstTask = test.task();
    test.client->connect([&](bool) { test.events.emplace_back("second"); });
    test.open();
    test.platform.advance(Seconds(10));
    EXPECT_EQ(test.events, Lines({"second"}));
    EXPECT_TRUE(firstTask.cancels().empty());
}

TEST(Client, LostConnectionLeavesTheFinishToItsDeadline) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.task().fail({54, "Connection reset by peer"});
    test.platform.runUntilIdle();
    test.finish();
    test.platform.advance(Seconds(1.99));
    EXPECT_EQ(test.count("finished"), 0);
    test.platform.advance(Seconds(0.01));
    EXPECT_EQ(test.count("finished"), 1);
    EXPECT_EQ(test.task().operations(), Lines({"resume", "receive", "send", "cancel"}));
    EXPECT_EQ(test.task().cancels(), std::vector<int>({1001}));
    EXPECT_EQ(test.errors, Lines({"Connection reset by peer"}));
}

TEST(Client, ReconnectAfterTheCloseDeadlineStartsClosed) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish();
    test.platform.advance(Seconds(2));
    test.connect();
    test.finish("at once");
    EXPECT_EQ(test.count("at once"), 1);
    test.client->send("ab");
    test.open();
    EXPECT_TRUE(test.task().sent().empty());
}

TEST(Client, KeepsItsDeadlinesAfterItsOwnerHasReleasedIt) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.finish();
    test.client.reset();
    test.platform.advance(Seconds(2));
    EXPECT_EQ(test.task().cancels(), std::vector<int>({1001}));
    EXPECT_EQ(test.count("finished"), 1);
}

TEST(Client, LivesUntilItsSessionReleasesIt) {
    ClientUnderTest test;
    test.connectAndOpen();
    const std::weak_ptr<DeepgramClient> watched = test.client;
    test.client.reset();
    EXPECT_FALSE(watched.expired());
    test.close();
    test.platform.advance(Seconds(9.9));
    EXPECT_FALSE(watched.expired());
    test.platform.advance(Seconds(0.1));
    EXPECT_TRUE(watched.expired());
}

TEST(Client, DeadlinesDoNotHoldIt) {
    for (const bool isFinishing : {false, true}) {
        ClientUnderTest test;
        test.connect();
        if (isFinishing) {
            test.open();
            test.finish();
        }
        const std::weak_ptr<DeepgramClient> watched = test.client;
        test.platform.webSockets().abandon();
        test.client.reset();
        EXPECT_TRUE(watched.expired());
        const std::vector<std::string> before = test.events;
        test.platform.advance(Seconds(10));
        EXPECT_EQ(test.events, before);
        EXPECT_TRUE(test.task().cancels().empty());
        EXPECT_TRUE(test.platform.log().lines().empty());
    }
}

TEST(Client, WaitingOpeningDoesNotHoldIt) {
    ClientUnderTest test;
    test.platform.webSockets().setAutomatic(false);
    test.connect();
    test.task().open();
    test.platform.webSockets().runDelegateQueues();
    const std::weak_ptr<DeepgramClient> watched = test.client;
    test.platform.webSockets().abandon();
    test.client.reset();
    EXPECT_TRUE(watched.expired());
    test.platform.runUntilIdle();
    EXPECT_TRUE(test.connects.empty());
}

TEST(Client, WaitingHandlersDoNotHoldIt) {
    ClientUnderTest test;
    test.platform.webSockets().setAutomatic(false);
    test.connect();
    test.task().open();
    test.platform.webSockets().runDelegateQueues();
    test.platform.runUntilIdle();
    test.task().failNextSend({32, "Broken pipe"});
    test.client->send("ab");
    test.task().deliverText(simulated::transcriptJson("hello", true));
    const std::weak_ptr<DeepgramClient> watched = test.client;
    test.platform.webSockets().releaseDelegates();
    test.client.reset();
    EXPECT_TRUE(watched.expired());
    test.platform.webSockets().runDelegateQueues();
    test.platform.runUntilIdle();
    EXPECT_EQ(test.events, Lines({"connected"}));
}

TEST(Client, WithoutAConnectItEndsWithItsOwner) {
    ClientUnderTest test;
    const std::weak_ptr<DeepgramClient> watched = test.client;
    test.client.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(Client, ReleasingItCancelsNothing) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.client.reset();
    test.platform.advance(Seconds(60));
    EXPECT_TRUE(test.task().cancels().empty());
}

}  // namespace
}  // namespace tarvik
