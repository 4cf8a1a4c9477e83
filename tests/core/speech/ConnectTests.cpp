// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/speech/ClientUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;
using Flags = std::vector<bool>;

constexpr auto openTimeoutLine = "TarvikDictate: Deepgram WS open timeout (5s) — connect failed";

TEST(Client, ConstructionMakesASessionAndNoConnection) {
    ClientUnderTest test;
    EXPECT_EQ(test.platform.journal().lines(), Lines({"makeSession"}));
}

TEST(Client, RequestCarriesTheAddressTheKeyAndTheTimeout) {
    ClientUnderTest test("secret", 16000);
    test.connect();
    const platform::UrlRequest& request = test.task().request();
    EXPECT_EQ(request.url,
              "wss://speech.example/v1/listen?model=nova-3&smart_format=true&punctuate=true"
              "&interim_results=true&mip_opt_out=true&encoding=linear16&sample_rate=16000"
              "&channels=1");
    EXPECT_EQ(request.cachePolicy, 0);
    EXPECT_EQ(request.timeoutInterval, 60.0);
    ASSERT_EQ(request.headerFields.size(), 1U);
    EXPECT_EQ(test.task().header("Sec-WebSocket-Protocol"), "token, secret");
    EXPECT_EQ(test.task().resumes(), 1);
}

TEST(Client, KeyIsSentUnchanged) {
    for (const char* key : {"  blanks  ", "a b", "a,b", "ключ", "a%20b", ""}) {
        ClientUnderTest test(key);
        test.connect();
        EXPECT_EQ(test.task().header("Sec-WebSocket-Protocol"), "token, " + std::string(key));
    }
}

TEST(Client, KeyWithALineBreakIsPassedOnUnchangedAndFailsTheOpening) {
    ClientUnderTest test("sec\r\nret");
    test.connect();
    EXPECT_EQ(test.task().header("Sec-WebSocket-Protocol"), "token, sec\r\nret");
    EXPECT_EQ(test.errors,
              Lines({"The header field Sec-WebSocket-Protocol has a control character"}));
    test.platform.advance(Seconds(5));
    EXPECT_EQ(test.connects, Flags({false}));
}

TEST(Client, InvalidHostIsOnlyLogged) {
    ClientUnderTest test("secret", 48000, "not a host");
    test.connect();
    test.platform.advance(Seconds(60));
    EXPECT_TRUE(test.platform.webSockets().tasks().empty());
    EXPECT_TRUE(test.events.empty());
    EXPECT_EQ(test.platform.log().lines(),
              Lines({"TarvikDictate: \"not a host\" is not a host to stream to — not connecting"}));
}

TEST(Client, CredentialsInAnInvalidHostAreNotLogged) {
    ClientUnderTest test("secret", 48000, "user:secret@speech.example");
    test.connect();
    EXPECT_TRUE(test.platform.webSockets().tasks().empty());
    EXPECT_EQ(test.platform.log().lines(),
              Lines({"TarvikDictate: \"…@speech.example\" is not a host to stream to — not "
                     "connecting"}));
}

TEST(Client, FirstReceiveIsArmedRightAfterTheStartAndBeforeTheSocketOpens) {
    ClientUnderTest test;
    test.connect();
    EXPECT_EQ(test.task().operations(), Lines({"resume", "receive"}));
    EXPECT_TRUE(test.task().hasWaitingReceive());
}

TEST(Client, ConnectCompletesWithTrueOnTheMainThreadOnceTheSocketIsOpen) {
    ClientUnderTest test;
    test.connect();
    EXPECT_TRUE(test.connects.empty());
    test.open();
    EXPECT_EQ(test.connects, Flags({true}));
    EXPECT_EQ(test.deliveriesOffMain, 0);
    test.platform.advance(Seconds(5));
    EXPECT_EQ(test.connects, Flags({true}));
    EXPECT_TRUE(test.platform.log().lines().empty());
}

TEST(Client, ProtocolThatTheServiceChoseDoesNotMatter) {
    for (const char* protocol : {"", "token", "secret", "other"}) {
        ClientUnderTest test;
        test.connect();
        test.task().open(protocol);
        test.platform.runUntilIdle();
        EXPECT_EQ(test.connects, Flags({true}));
    }
}

TEST(Client, BecomesOpenOnTheMainThreadOnly) {
    ClientUnderTest test;
    test.platform.webSockets().setAutomatic(false);
    test.connect();
    test.task().open();
    test.platform.webSockets().runDelegateQueues();
    test.client->send("ab");
    EXPECT_TRUE(test.task().sentData().empty());
    test.platform.runUntilIdle();
    test.client->send("cd");
    EXPECT_EQ(test.task().sentData(), Lines({"cd"}));
}

TEST(Client, IsOpenWhenTheConnectCompletionRuns) {
    ClientUnderTest test;
    test.client->connect([&](bool) { test.client->send("ab"); });
    test.open();
    EXPECT_EQ(test.task().sentData(), Lines({"ab"}));
}

TEST(Client, OpenDeadlineCompletesWithFalseAfterFiveSecondsAndIsLogged) {
    ClientUnderTest test;
    test.connect();
    test.platform.advance(Seconds(4.99));
    EXPECT_TRUE(test.connects.empty());
    test.platform.advance(Seconds(0.01));
    EXPECT_EQ(test.connects, Flags({false}));
    EXPECT_EQ(test.deliveriesOffMain, 0);
    EXPECT_EQ(test.platform.log().lines(), Lines({openTimeoutLine}));
    EXPECT_TRUE(test.task().cancels().empty());
}

TEST(Client, SocketThatOpensLateCarriesAudioWithoutASecondCompletion) {
    ClientUnderTest test;
    test.connect();
    test.platform.advance(Seconds(6));
    test.open();
    EXPECT_EQ(test.connects, Flags({false}));
    EXPECT_EQ(test.platform.log().count(openTimeoutLine), 1U);
    test.client->send("ab");
    EXPECT_EQ(test.task().sentData(), Lines({"ab"}));
}

TEST(Client, CloseBeforeTheOpeningCompletesWithFalseWithoutALogLine) {
    ClientUnderTest test;
    test.connect();
    test.close();
    EXPECT_EQ(test.connects, Flags({false}));
    EXPECT_EQ(test.deliveriesOffMain, 0);
    test.platform.advance(Seconds(60));
    EXPECT_EQ(test.connects, Flags({false}));
    EXPECT_TRUE(test.platform.log().lines().empty());
}

TEST(Client, CloseBeforeTheOpeningIsDeliveredInALaterTurnOfTheMainThread) {
    ClientUnderTest test;
    test.platform.webSockets().setAutomatic(false);
    test.connect();
    test.task().close();
    test.platform.webSockets().runDelegateQueues();
    EXPECT_TRUE(test.connects.empty());
    test.platform.runUntilIdle();
    EXPECT_EQ(test.connects, Flags({false}));
}

TEST(Client, LateSocketThatClosesDeliversNothing) {
    ClientUnderTest test;
    test.connect();
    test.platform.advance(Seconds(5));
    test.task().notifyClose();
    test.platform.runUntilIdle();
    test.platform.advance(Seconds(60));
    EXPECT_EQ(test.connects, Flags({false}));
    EXPECT_EQ(test.count("finished"), 0);
}

TEST(Client, RefusedHandshakeIsAnErrorAtOnceAndAFailedConnectAtTheDeadline) {
    ClientUnderTest test;
    test.connect();
    test.task().fail({401, "The service answered 401 Unauthorized"});
    test.platform.runUntilIdle();
    EXPECT_EQ(test.errors, Lines({"The service answered 401 Unauthorized"}));
    EXPECT_EQ(test.errorsOffDelegateQueue, 0);
    EXPECT_TRUE(test.connects.empty());
    test.platform.advance(Seconds(5));
    EXPECT_EQ(test.connects, Flags({false}));
    EXPECT_EQ(test.errors.size(), 1U);
}

TEST(Client, AudioBeforeTheOpeningIsDroppedAndNotKept) {
    ClientUnderTest test;
    test.client->send("before connect");
    test.connect();
    test.client->send("before open");
    test.open();
    test.client->send("ab");
    EXPECT_EQ(test.task().sentData(), Lines({"ab"}));
}

TEST(Client, EachChunkIsOneBinaryMessage) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.client->send(std::string("\0\x01\xFF", 3));
    test.client->send("");
    EXPECT_EQ(test.task().sentData(), Lines({std::string("\0\x01\xFF", 3), ""}));
    EXPECT_TRUE(test.task().sentTexts().empty());
}

TEST(Client, FailedSendIsReportedOnTheDelegateQueueAndTheNextOneIsSent) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.task().failNextSend({32, "Broken pipe"});
    test.client->send("ab");
    test.platform.runUntilIdle();
    EXPECT_EQ(test.errors, Lines({"Broken pipe"}));
    EXPECT_EQ(test.errorsOffDelegateQueue, 0);
    test.client->send("cd");
    EXPECT_EQ(test.task().sentData(), Lines({"cd"}));
}

TEST(Client, EachSendOverALostConnectionIsOneError) {
    ClientUnderTest test;
    test.connectAndOpen();
    test.task().fail({54, "Connection reset by peer"});
    test.platform.runUntilIdle();
    test.client->send("ab");
    test.client->send("cd");
    test.platform.runUntilIdle();
    // The first error is that of the waiting receive.
    EXPECT_EQ(test.errors, Lines(3, "Connection reset by peer"));
    EXPECT_EQ(test.errorsOffDelegateQueue, 0);
    EXPECT_TRUE(test.platform.log().lines().empty());
}

TEST(Client, ErrorsWithoutACallbackAreDropped) {
    ClientUnderTest test;
    test.client->onError = nullptr;
    test.connectAndOpen();
    test.task().failNextSend({32, "Broken pipe"});
    test.client->send("ab");
    test.task().fail({54, "Connection reset by peer"});
    test.platform.runUntilIdle();
    EXPECT_TRUE(test.errors.empty());
}

}  // namespace
}  // namespace tarvik
