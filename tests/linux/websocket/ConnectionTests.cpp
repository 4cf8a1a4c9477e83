// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <thread>

#include "tests/linux/websocket/BeastTest.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using WebSocketConnection = BeastTest;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

TEST_F(WebSocketConnection, ReceivesAMebibyteAndGoesOn) {
    open();
    std::string large(mebibyte, 'a');
    large.back() = 'z';
    world.sendText(large);
    world.sendText("next");
    ASSERT_TRUE(comes("text next"));
    EXPECT_TRUE(recorder->has("text 1048576 bytes"));
    EXPECT_TRUE(world.logLines().empty());
}

TEST_F(WebSocketConnection, AMessageBeyondTheLimitIsDroppedWithOneLineAndReceivingGoesOn) {
    open();
    world.sendText("before");
    world.sendText(std::string(mebibyte + 1, 'a'));
    world.sendData(std::string(40 * mebibyte, 'a'));
    // The limit counts for the whole message, which may come in any number of frames.
    world.peer().write(Peer::frame(Peer::data, std::string(mebibyte, 'a'), 0) +
                       Peer::frame(0, "b", Peer::final));
    world.sendText("after");
    ASSERT_TRUE(comes("text after"));
    EXPECT_EQ(recorder->events(),
              (std::vector<std::string>{"open token", "text before", "text after"}));
    const std::string end = " bytes that is longer than 1048576";
    EXPECT_EQ(world.logLines(),
              (std::vector<std::string>{"TarvikDictate: dropped a message of 1048577" + end,
                                        "TarvikDictate: dropped a message of 41943040" + end,
                                        "TarvikDictate: dropped a message of 1048577" + end}));
}

TEST_F(WebSocketConnection, EndsWhenAFrameClaimsMoreThan63BitsOfLength) {
    open();
    world.sendText("before");
    world.peer().write("\x82\x7F" + std::string(8, '\xFF') + "x");
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_EQ(recorder->lastError().localizedDescription.substr(0, 38),
              "The connection to the service was lost");
}

// The sanitizers keep freed memory for a while, to notice a use of it.
constexpr bool keepsFreedMemory =
#ifdef TARVIK_SANITIZED
    true;
#else
    false;
#endif

class WebSocketBacklog : public BeastTest {
  protected:
    static constexpr auto waiting =
        "TarvikDictate: the network is too slow, more than 5 s of sound wait to be sent";

    /// Sends more than the network takes, in chunks as of sound, and then a chunk now and then.
    void sendUntilTheLogTellsOfTheBacklog() {
        open();
        memoryBefore = residentBytes();
        for (int count = 0; count < backlogChunks; ++count) {
            send(std::string(chunkSize, 's'));
        }
        ASSERT_TRUE(world.runUntil([this] {
            send("s");
            return world.logLines() == std::vector<std::string>{waiting};
        }));
    }

    void send(std::string bytes) {
        task->send({platform::WebSocketMessage::Kind::data, std::move(bytes)},
                   [this](const std::optional<Error>& error) { ++(error ? unsent : sent); });
        ++handedOver;
    }

    /// The memory of this process, in bytes.
    static std::size_t residentBytes() {
        std::ifstream sizes("/proc/self/statm");
        std::size_t all = 0;
        std::size_t resident = 0;
        sizes >> all >> resident;
        return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    }

    bool isMemoryGivenBack() {
        return keepsFreedMemory ||
               world.runUntil([this] { return residentBytes() < memoryBefore + 8 * mebibyte; });
    }

    static constexpr std::size_t chunkSize = 4096;
    static constexpr int backlogChunks = 4'000;
    std::size_t memoryBefore = 0;
    std::atomic<int> sent = 0;
    std::atomic<int> unsent = 0;
    int handedOver = 0;
};

TEST_F(WebSocketBacklog, IsToldOnceAndLeavesCompletelyWhenTheServiceReadsAgain) {
    sendUntilTheLogTellsOfTheBacklog();
    std::thread reader([this] {
        while (world.peer().readFrame()) {
        }
    });
    EXPECT_TRUE(world.runUntil([this] { return sent == handedOver; }));
    EXPECT_TRUE(world.runUntil([this] { return world.logLines().size() == 2; }));
    EXPECT_EQ(world.logLines().back(), "TarvikDictate: all waiting sound has left");
    EXPECT_TRUE(isMemoryGivenBack());
    task->cancel(platform::closeCodeGoingAway);
    reader.join();
}

TEST_F(WebSocketBacklog, IsToldToBeLostWhenTheConnectionEnds) {
    sendUntilTheLogTellsOfTheBacklog();
    task->cancel(platform::closeCodeGoingAway);
    EXPECT_TRUE(world.runUntil([this] { return world.logLines().size() == 2; }));
    EXPECT_EQ(world.logLines().back(), "TarvikDictate: the waiting sound is lost");
    EXPECT_TRUE(world.runUntil([this] { return sent + unsent == handedOver; }));
    EXPECT_GT(unsent, 0);
    EXPECT_TRUE(isMemoryGivenBack());
}

TEST_F(WebSocketBacklog, IsToldToBeLostWhenTheServiceEnds) {
    sendUntilTheLogTellsOfTheBacklog();
    world.endService();
    EXPECT_TRUE(world.runUntil([this] { return world.logLines().size() == 2; }));
    EXPECT_EQ(world.logLines().back(), "TarvikDictate: the waiting sound is lost");
}

TEST_F(WebSocketConnection, DropsTextThatIsNotUtf8AndGoesOn) {
    open();
    world.sendText("before");
    world.sendText("\xC3(");
    world.sendText("cut off \xF0\x9F\x98");
    world.sendData("\xFF\xFE");
    world.sendText("after");
    ASSERT_TRUE(comes("text after"));
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"open token", "text before",
                                                            "data \xFF\xFE", "text after"}));
    ASSERT_EQ(world.logLines().size(), 2U);
    EXPECT_EQ(world.logLines().front(),
              "TarvikDictate: dropped a text message of 2 bytes that is not UTF-8");
}

TEST_F(WebSocketConnection, ReadsFramesInAnyPieces) {
    open();
    const std::string smiley = "😀";
    // Two frames share a character, a ping comes between them, and each write has one byte.
    const std::string bytes =
        Peer::frame(Peer::text, "a" + smiley.substr(0, 2), 0) + Peer::frame(Peer::ping, "p") +
        Peer::frame(0, smiley.substr(2), Peer::final) +
        Peer::frame(Peer::data, std::string(130, 'b')) + Peer::frame(Peer::text, "c");
    for (const char byte : bytes) {
        world.peer().write({&byte, 1});
    }
    ASSERT_TRUE(comes("text c"));
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"open token", "text a" + smiley,
                                                            "data 130 bytes", "text c"}));
    const auto pong = world.peer().readFrame();
    ASSERT_TRUE(pong);
    EXPECT_EQ(pong->opcode, Peer::pong);
    EXPECT_EQ(pong->payload, "p");
}

TEST_F(WebSocketConnection, AFrameThatBreaksTheProtocolIsOneErrorAndNoClose) {
    open();
    world.sendText("before");
    world.peer().write(Peer::frame(Peer::text, "x", 0xC0));
    const auto closeFrame = world.peer().readFrame();
    ASSERT_TRUE(closeFrame);
    EXPECT_EQ(closeFrame->closeCode(), 1002);
    ASSERT_TRUE(comes("failed receive"));
    world.settle();
    EXPECT_EQ(recorder->events(),
              (std::vector<std::string>{"open token", "text before", "failed receive"}));
}

TEST_F(WebSocketConnection, AMessageSentAfterAFrameThatBreaksTheProtocolFailsForTheSameReason) {
    open();
    world.peer().write(Peer::frame(Peer::text, "x", 0xC0));
    // The client has seen the frame, and waits for the end of the connection.
    ASSERT_TRUE(world.peer().readFrame());
    recorder->sendText(*task, "late");
    ASSERT_TRUE(comes("failed receive"));
    const std::string reason = recorder->lastError().localizedDescription;
    EXPECT_EQ(reason.find("cancel"), std::string::npos) << reason;
    recorder->sendText(*task, "later");
    ASSERT_TRUE(comes("failed later"));
    EXPECT_EQ(recorder->lastError().localizedDescription, "A message could not be sent: " + reason);
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"open token", "failed late",
                                                            "failed receive", "failed later"}));
}

TEST_F(WebSocketConnection, AResetInTheMiddleOfAMessageLosesTheConnection) {
    open();
    const std::string frame = Peer::frame(Peer::data, std::string(100'000, 'a'));
    world.peer().write(frame.substr(0, 50'000));
    world.peer().reset();
    ASSERT_TRUE(comes("failed receive"));
    world.settle();
    EXPECT_EQ(recorder->events().size(), 2U);
}

TEST_F(WebSocketConnection, AnEndWithoutACloseFrameIsALostConnection) {
    open();
    world.peer().end();
    ASSERT_TRUE(comes("failed receive"));
    world.settle();
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"open token", "failed receive"}));
}

TEST_F(WebSocketConnection, SendsThatWaitFailWhenTheConnectionIsLost) {
    open();
    // The peer reads nothing, and the message is larger than the kernel's buffers.
    task->send({platform::WebSocketMessage::Kind::data, std::string(32 * mebibyte, 'a')},
               [](const auto&) {});
    recorder->sendText(*task, "behind");
    world.settle();
    EXPECT_FALSE(recorder->has("sent behind"));
    world.peer().reset();
    ASSERT_TRUE(comes("failed behind"));
    ASSERT_TRUE(comes("failed receive"));
    const std::string reason = recorder->lastError().localizedDescription;
    recorder->sendText(*task, "later");
    ASSERT_TRUE(comes("failed later"));
    EXPECT_EQ(recorder->lastError().localizedDescription, "A message could not be sent: " + reason);
}

TEST_F(WebSocketConnection, AnswersACloseFrameWithTheSameCode) {
    open();
    world.sendClose(1000, "done");
    const auto answer = world.peer().readFrame();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->opcode, Peer::close);
    EXPECT_EQ(answer->closeCode(), 1000);
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_EQ(recorder->lastError().localizedDescription,
              "The service closed the connection (1000: done)");
    EXPECT_EQ(recorder->lastError().code, 1000);
}

TEST_F(WebSocketConnection, ACloseFrameIsToldAlthoughMessagesAreSentWhileTheLastOnesAreReceived) {
    session = world.service().makeSession(recorder);
    task = session->webSocketTask(world.request());
    task->resume();
    world.accept("token");
    // More than the client keeps, so that the receiving goes on when the close frame is read.
    constexpr std::size_t messageCount = 100;
    for (std::size_t number = 0; number < messageCount; ++number) {
        world.sendText("message");
    }
    world.sendClose(1000, "bye");
    std::atomic<std::size_t> received = 0;
    const std::function<void()> receiveAndSend = [&] {
        task->receive([&](const Result<platform::WebSocketMessage>& result) {
            if (result) {
                ++received;
                recorder->sendText(*task, "answer");
                receiveAndSend();
            } else {
                recorder->receive(*task);
            }
        });
    };
    receiveAndSend();
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_TRUE(recorder->has("close 1000 bye"));
    EXPECT_EQ(received, messageCount);
}

TEST_F(WebSocketConnection, ACloseFrameWithoutACodeIsToldAs1005) {
    open();
    world.peer().write(Peer::frame(Peer::close, ""));
    ASSERT_TRUE(comes("close 1005 "));
}

TEST_F(WebSocketConnection, DoesNotWaitForTheServerToEndAClosedConnection) {
    open();
    const Seconds start = world.now();
    world.sendClose(1000, "");
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_LT(world.now() - start, BeastWorld::closeTimeout);
    // The server keeps the connection open, so the client has to end it.
    ASSERT_TRUE(world.peer().readFrame());
    EXPECT_TRUE(world.peer().readEnd());
}

TEST_F(WebSocketConnection, CancelSendsACloseFrame) {
    open();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    const auto closeFrame = world.peer().readFrame();
    ASSERT_TRUE(closeFrame);
    EXPECT_EQ(closeFrame->opcode, Peer::close);
    EXPECT_EQ(closeFrame->closeCode(), 1001);
    world.sendClose(1001, "");
    EXPECT_TRUE(world.peer().readEnd());
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"open token", "failed receive"}));
}

TEST_F(WebSocketConnection, EndsTheConnectionWhenTheServerNeverAnswersTheClose) {
    open();
    const Seconds start = world.now();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(world.peer().readFrame());
    EXPECT_TRUE(world.peer().readEnd());
    EXPECT_GE(world.now() - start, BeastWorld::closeTimeout);
}

TEST_F(WebSocketConnection, CancelDoesNotWaitForAServerThatTakesNothing) {
    open();
    task->send({platform::WebSocketMessage::Kind::data, std::string(32 * mebibyte, 'a')},
               [](const auto&) {});
    recorder->sendText(*task, "behind");
    world.settle();
    const Seconds start = world.now();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    ASSERT_TRUE(comes("failed behind"));
    EXPECT_LT(world.now() - start, BeastWorld::closeTimeout);
    while (world.peer().readFrame()) {
    }
}

TEST_F(WebSocketConnection, CancelDuringTheTlsHandshakeEndsTheConnection) {
    start();
    Peer silent = world.listener().accept();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    std::string hello = silent.readHead();
    EXPECT_TRUE(hello.empty());
}

/// The descriptors of a program that this process starts.
std::string inheritedDescriptors() {
    return TestProcess::run({"sh", "-c", "ls /proc/$$/fd"}).output;
}

TEST_F(WebSocketConnection, NoProgramInheritsTheConnection) {
    const std::string before = inheritedDescriptors();
    open();
    EXPECT_EQ(inheritedDescriptors(), before);
}

TEST_F(WebSocketConnection, HoldsTheServerBackWhileNobodyAsks) {
    session = world.service().makeSession(recorder);
    task = session->webSocketTask(world.request());
    task->resume();
    world.accept("token");
    ASSERT_TRUE(comes("open token"));
    const std::string frame = Peer::frame(Peer::data, std::string(mebibyte, 'a'));
    constexpr int maxFrames = 100;
    int taken = 0;
    while (taken < maxFrames && world.peer().tryWrite(frame)) {
        ++taken;
    }
    ASSERT_LT(taken, maxFrames);
    recorder->receiveAll(task);
    world.peer().write(frame);
    ASSERT_TRUE(comes("data 1048576 bytes", static_cast<std::size_t>(taken) + 1));
}

}  // namespace

}  // namespace tarvik::tests
