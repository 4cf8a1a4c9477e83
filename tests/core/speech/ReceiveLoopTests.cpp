// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/speech/ClientUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;
using Transcripts = std::vector<ClientUnderTest::Transcript>;

using simulated::transcriptJson;

class ReceiveLoop : public testing::Test {
  protected:
    ReceiveLoop() { test.connectAndOpen(); }

    ClientUnderTest test;
};

TEST_F(ReceiveLoop, TextAndBinaryMessagesAreDelivered) {
    test.task().deliverText(transcriptJson("hello", true));
    test.task().deliverData(transcriptJson("hello", true));
    test.platform.runUntilIdle();
    EXPECT_EQ(test.transcripts, Transcripts({{"hello", true}, {"hello", true}}));
    EXPECT_EQ(test.deliveriesOffMain, 0);
}

TEST_F(ReceiveLoop, InterimAndFinalResultsComeInOrder) {
    test.receive(transcriptJson("hel", false));
    test.receive(transcriptJson("hello", true));
    test.receive(transcriptJson("wor", false));
    EXPECT_EQ(test.transcripts, Transcripts({{"hel", false}, {"hello", true}, {"wor", false}}));
}

TEST_F(ReceiveLoop, OneReceiveWaitsAtATime) {
    for (int i = 0; i < 10; ++i) {
        test.receive(transcriptJson("hello", true));
        EXPECT_TRUE(test.task().hasWaitingReceive());
    }
    EXPECT_EQ(test.task().receives(), 11);
    EXPECT_EQ(test.task().maxWaitingReceives(), 1);
}

TEST_F(ReceiveLoop, MessagesWithoutATranscriptAreDroppedAndTheNextOneIsReceived) {
    for (const char* message :
         {R"({"channel":{"alternatives":[]},"is_final":true})",
          R"({"channel":{"alternatives":[{"transcript":""}]},"is_final":true})",
          R"({"type":"Metadata"})", "[]", "not JSON", ""}) {
        test.receive(message);
    }
    test.receive(transcriptJson("hello", true));
    EXPECT_EQ(test.transcripts, Transcripts({{"hello", true}}));
    EXPECT_TRUE(test.errors.empty());
    EXPECT_TRUE(test.platform.log().lines().empty());
}

TEST_F(ReceiveLoop, MalformedMessagesAreDroppedAndTheNextOneIsReceived) {
    test.receive(std::string(1000, '[') + std::string(1000, ']'));
    test.receive(std::string(std::size_t{16} << 20, '{'));
    test.receive(transcriptJson(std::string(std::size_t{16} << 20, 'x'), true));
    test.receive(transcriptJson("\xFF\xFE", true));
    test.task().deliverData("\xC3\x28");
    test.receive(transcriptJson("hello", true));
    EXPECT_EQ(test.transcripts, Transcripts({{"hello", true}}));
    EXPECT_TRUE(test.errors.empty());
}

TEST_F(ReceiveLoop, MessageOfAnUnknownKindIsDiscardedAndTheNextOneIsReceived) {
    test.task().deliverOther();
    test.receive(transcriptJson("hello", true));
    EXPECT_EQ(test.transcripts, Transcripts({{"hello", true}}));
}

TEST_F(ReceiveLoop, FailureIsReportedOnceOnTheDelegateQueueAndEndsTheLoop) {
    test.task().fail({54, "Connection reset by peer"});
    test.platform.advance(Seconds(60));
    EXPECT_EQ(test.errors, Lines({"Connection reset by peer"}));
    EXPECT_EQ(test.errorsOffDelegateQueue, 0);
    EXPECT_EQ(test.task().receives(), 1);
}

TEST_F(ReceiveLoop, CancelAtTheCloseDeadlineIsReportedOnce) {
    test.finish();
    test.platform.advance(Seconds(2));
    test.receive(transcriptJson("too late", true));
    EXPECT_EQ(test.errors.size(), 1U);
    EXPECT_EQ(test.errorsOffDelegateQueue, 0);
    EXPECT_TRUE(test.transcripts.empty());
    EXPECT_FALSE(test.task().hasWaitingReceive());
}

TEST_F(ReceiveLoop, FailureAfterANormalCloseIsReportedLikeAnyOther) {
    test.finish();
    test.close();
    EXPECT_EQ(test.errors.size(), 1U);
    EXPECT_EQ(test.count("finished"), 1);
}

TEST_F(ReceiveLoop, ResultsAfterTheCloseMessageAreDeliveredBeforeTheFinish) {
    test.finish();
    test.task().deliverText(transcriptJson("last", true));
    test.task().deliverText(transcriptJson("words", true));
    test.task().notifyClose();
    test.platform.runUntilIdle();
    EXPECT_EQ(test.events, Lines({"connected", "transcript last", "transcript words", "finished"}));
}

TEST_F(ReceiveLoop, MessageAfterTheCloseIsDeliveredWithoutAFurtherReceive) {
    test.task().notifyClose();
    test.receive(transcriptJson("one more", true));
    EXPECT_EQ(test.transcripts, Transcripts({{"one more", true}}));
    EXPECT_FALSE(test.task().hasWaitingReceive());
    EXPECT_EQ(test.task().receives(), 1);
}

TEST_F(ReceiveLoop, WaitingDeliveryHoldsTheClient) {
    test.platform.webSockets().setAutomatic(false);
    test.task().deliverText(transcriptJson("hello", true));
    test.platform.webSockets().runDelegateQueues();
    test.platform.webSockets().abandon();
    test.client.reset();
    test.platform.runUntilIdle();
    EXPECT_EQ(test.transcripts, Transcripts({{"hello", true}}));
}

TEST_F(ReceiveLoop, CallbackIsReadAtTheDelivery) {
    test.platform.webSockets().setAutomatic(false);
    test.task().deliverText(transcriptJson("hello", true));
    test.platform.webSockets().runDelegateQueues();
    test.client->onTranscript = nullptr;
    test.platform.runUntilIdle();
    EXPECT_TRUE(test.transcripts.empty());
    EXPECT_TRUE(test.errors.empty());
}

TEST(ReceiveLoopWhileConnecting, MessageBeforeTheClientIsOpenIsHandledAndEndsTheLoop) {
    ClientUnderTest test;
    test.platform.webSockets().setAutomatic(false);
    test.connect();
    test.task().open();
    test.task().deliverText(transcriptJson("early", true));
    test.platform.webSockets().runDelegateQueues();
    EXPECT_EQ(test.task().receives(), 1);
    test.platform.runUntilIdle();
    EXPECT_EQ(test.transcripts, Transcripts({{"early", true}}));
    EXPECT_FALSE(test.task().hasWaitingReceive());
}

}  // namespace
}  // namespace tarvik
