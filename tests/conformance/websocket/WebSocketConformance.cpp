// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "tests/conformance/websocket/WebSocketRecorder.h"
#include "tests/conformance/websocket/WebSocketWorld.h"

namespace tarvik::tests {

namespace {

using platform::WebSocketMessage;
using Events = std::vector<std::string>;

class WebSocketConformance : public testing::TestWithParam<WebSocketWorldMaker> {
  protected:
    void make() { make(world->request()); }
    void make(const platform::UrlRequest& request) {
        session = world->service().makeSession(recorder);
        task = session->webSocketTask(request);
    }

    void open() {
        make();
        task->resume();
        world->accept("token");
        ASSERT_TRUE(comes("open token"));
    }

    bool comes(const std::string& event) { return comes(event, 1); }
    bool comes(const std::string& event, std::size_t count) {
        return world->runUntil([&] { return recorder->count(event) >= count; });
    }

    std::unique_ptr<WebSocketWorld> world = GetParam().make();
    std::shared_ptr<WebSocketRecorder> recorder = std::make_shared<WebSocketRecorder>();
    std::shared_ptr<platform::WebSocketSession> session;
    std::shared_ptr<platform::WebSocketTask> task;
};

TEST_P(WebSocketConformance, TellsWhichSubprotocolTheServiceChose) {
    open();
    world->settle();
    EXPECT_EQ(recorder->events(), Events{"open token"});
}

TEST_P(WebSocketConformance, OpensWithoutASubprotocolToo) {
    make();
    task->resume();
    world->accept("");
    EXPECT_TRUE(comes("open "));
}

TEST_P(WebSocketConformance, OpensOnceHoweverOftenItIsResumed) {
    open();
    task->resume();
    world->settle();
    EXPECT_EQ(recorder->events(), Events{"open token"});
}

TEST_P(WebSocketConformance, DeliversMessagesInTheirOrderAndKind) {
    open();
    recorder->receiveAll(task);
    world->sendText("one");
    world->sendData("two");
    world->sendText("");
    world->sendText("Zażółć 😀");
    ASSERT_TRUE(comes("text Zażółć 😀"));
    EXPECT_EQ(recorder->events(),
              (Events{"open token", "text one", "data two", "text ", "text Zażółć 😀"}));
}

TEST_P(WebSocketConformance, AReceiveThatWaitedBeforeTheOpeningGetsTheFirstMessage) {
    make();
    task->resume();
    recorder->receive(*task);
    world->accept("token");
    world->sendText("first");
    ASSERT_TRUE(comes("text first"));
}

TEST_P(WebSocketConformance, KeepsMessagesUntilTheyAreAskedFor) {
    open();
    world->sendText("one");
    world->sendText("two");
    world->settle();
    EXPECT_EQ(recorder->events(), Events{"open token"});
    recorder->receive(*task);
    ASSERT_TRUE(comes("text one"));
    world->settle();
    EXPECT_FALSE(recorder->has("text two"));
    recorder->receive(*task);
    ASSERT_TRUE(comes("text two"));
}

TEST_P(WebSocketConformance, SendsInOrderAndCompletesEachOnce) {
    open();
    Events expected{"open token"};
    for (const char* text : {"a", "b", "c", "d"}) {
        recorder->sendText(*task, text);
        expected.push_back(std::string("sent ") + text);
    }
    for (const char* text : {"a", "b", "c", "d"}) {
        EXPECT_EQ(world->nextMessage().bytes, text);
    }
    ASSERT_TRUE(comes("sent d"));
    EXPECT_EQ(recorder->events(), expected);
}

TEST_P(WebSocketConformance, KeepsTheKindOfWhatItSends) {
    open();
    task->send({WebSocketMessage::Kind::data, std::string("\0\xFF", 2)}, [](const auto&) {});
    task->send({WebSocketMessage::Kind::string, "text"}, [](const auto&) {});
    task->send({WebSocketMessage::Kind::data, {}}, [](const auto&) {});
    const WebSocketMessage first = world->nextMessage();
    EXPECT_EQ(first.kind, WebSocketMessage::Kind::data);
    EXPECT_EQ(first.bytes, std::string("\0\xFF", 2));
    EXPECT_EQ(world->nextMessage().kind, WebSocketMessage::Kind::string);
    EXPECT_EQ(world->nextMessage().bytes, "");
}

TEST_P(WebSocketConformance, MessagesGivenBeforeTheOpeningWaitForIt) {
    make();
    task->resume();
    recorder->sendText(*task, "early");
    world->settle();
    EXPECT_FALSE(recorder->has("sent early"));
    world->accept("token");
    ASSERT_TRUE(comes("sent early"));
    EXPECT_EQ(world->nextMessage().bytes, "early");
}

TEST_P(WebSocketConformance, TellsACloseAfterTheMessagesBeforeIt) {
    open();
    recorder->receiveAll(task);
    world->sendText("one");
    world->sendText("two");
    world->sendClose(1000, "bye");
    ASSERT_TRUE(comes("failed receive"));
    world->settle();
    EXPECT_EQ(recorder->events(),
              (Events{"open token", "text one", "text two", "close 1000 bye", "failed receive"}));
    EXPECT_FALSE(recorder->lastError().localizedDescription.empty());
}

TEST_P(WebSocketConformance, TellsACloseAlsoWhenNobodyAsksAndKeepsTheMessages) {
    open();
    world->sendText("kept");
    world->sendClose(1011, "");
    ASSERT_TRUE(comes("close 1011 "));
    recorder->receiveAll(task);
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_EQ(recorder->events(),
              (Events{"open token", "close 1011 ", "text kept", "failed receive"}));
}

TEST_P(WebSocketConformance, ALostConnectionIsNoClose) {
    open();
    recorder->receiveAll(task);
    world->lose();
    ASSERT_TRUE(comes("failed receive"));
    world->settle();
    EXPECT_EQ(recorder->events(), (Events{"open token", "failed receive"}));
}

TEST_P(WebSocketConformance, EverythingAskedForAfterTheEndFails) {
    open();
    recorder->receive(*task);
    world->lose();
    ASSERT_TRUE(comes("failed receive"));
    recorder->receive(*task);
    recorder->sendText(*task, "late");
    ASSERT_TRUE(comes("failed receive", 2));
    ASSERT_TRUE(comes("failed late"));
}

TEST_P(WebSocketConformance, CancelFailsTheReceiveThatWaitsAndTellsNothingElse) {
    open();
    recorder->receive(*task);
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    task->cancel(platform::closeCodeGoingAway);
    world->settle();
    EXPECT_EQ(recorder->events(), (Events{"open token", "failed receive"}));
}

TEST_P(WebSocketConformance, CancelWhileConnectingFailsWhatWaits) {
    make();
    task->resume();
    recorder->receive(*task);
    recorder->sendText(*task, "unsent");
    task->cancel(platform::closeCodeGoingAway);
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    ASSERT_TRUE(comes("failed unsent"));
    world->settle();
    EXPECT_EQ(recorder->events().size(), 2U);
}

TEST_P(WebSocketConformance, CancelBeforeTheStartIsTheEnd) {
    make();
    recorder->receive(*task);
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    task->resume();
    recorder->sendText(*task, "unsent");
    ASSERT_TRUE(comes("failed unsent"));
    EXPECT_FALSE(recorder->has("open token"));
}

TEST_P(WebSocketConformance, CancelAfterACloseIsHarmless) {
    open();
    recorder->receiveAll(task);
    world->sendClose(1000, "");
    ASSERT_TRUE(comes("failed receive"));
    task->cancel(platform::closeCodeGoingAway);
    world->settle();
    EXPECT_EQ(recorder->count("close 1000 "), 1U);
    EXPECT_EQ(recorder->count("failed receive"), 1U);
}

TEST_P(WebSocketConformance, ALineBreakInAHeaderFailsTheOpening) {
    platform::UrlRequest request = world->request();
    request.headerFields = {{"Sec-WebSocket-Protocol", "token, a\r\nEvil: b"}};
    make(request);
    task->resume();
    recorder->receive(*task);
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_FALSE(recorder->lastError().localizedDescription.empty());
    EXPECT_FALSE(recorder->has("open token"));
}

TEST_P(WebSocketConformance, TheErrorOfALineBreakNamesTheHeader) {
    platform::UrlRequest request = world->request();
    request.headerFields = {{"Sec-WebSocket-Protocol", "token, a\r\nEvil: b"}};
    make(request);
    task->resume();
    recorder->receive(*task);
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_NE(recorder->lastError().localizedDescription.find("Sec-WebSocket-Protocol"),
              std::string::npos);
}

TEST_P(WebSocketConformance, AnOpeningThatTakesTooLongFails) {
    platform::UrlRequest request = world->request();
    request.timeoutInterval = 0.2;
    make(request);
    const Seconds start = world->now();
    task->resume();
    recorder->receive(*task);
    ASSERT_TRUE(comes("failed receive"));
    EXPECT_GE(world->now() - start, Seconds(0.2));
    world->settle();
    EXPECT_EQ(recorder->events(), Events{"failed receive"});
}

TEST_P(WebSocketConformance, HandlersRunOneAtATimeAndNotOnTheMainThread) {
    open();
    recorder->receiveAll(task);
    constexpr int senders = 3;
    constexpr int messages = 50;
    std::vector<std::thread> threads;
    for (int sender = 0; sender < senders; ++sender) {
        threads.emplace_back([&] {
            for (int message = 0; message < messages; ++message) {
                recorder->sendText(*task, "x");
            }
        });
    }
    for (int message = 0; message < messages; ++message) {
        world->sendText("y");
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(comes("sent x", senders * messages));
    ASSERT_TRUE(comes("text y", messages));
    EXPECT_FALSE(recorder->wasConcurrent());
    EXPECT_FALSE(recorder->threads().contains(std::this_thread::get_id()));
}

TEST_P(WebSocketConformance, AHandlerNeverRunsInsideTheCallThatWasGivenIt) {
    open();
    world->sendText("one");
    world->sendText("two");
    world->settle();
    std::atomic<bool> isInside = false;
    std::atomic<int> wrong = 0;
    std::atomic<int> done = 0;
    task->receive([&](const auto&) {
        isInside = true;
        task->receive([&](const auto&) { wrong += isInside ? 1 : 0, ++done; });
        task->send({WebSocketMessage::Kind::string, "x"},
                   [&](const auto&) { wrong += isInside ? 1 : 0, ++done; });
        isInside = false;
    });
    ASSERT_TRUE(world->runUntil([&] { return done == 2; }));
    EXPECT_EQ(wrong, 0);
}

TEST_P(WebSocketConformance, ASessionWithoutAConnectionDoesNotHoldItsDelegate) {
    session = world->service().makeSession(recorder);
    const std::weak_ptr<WebSocketRecorder> delegate = recorder;
    recorder.reset();
    EXPECT_TRUE(delegate.expired());
}

TEST_P(WebSocketConformance, HoldsItsDelegateUntilSomeTimeAfterTheEnd) {
    open();
    const std::weak_ptr<WebSocketRecorder> delegate = recorder;
    recorder->receiveAll(task);
    recorder.reset();
    world->settle();
    ASSERT_FALSE(delegate.expired());
    const Seconds start = world->now();
    world->sendClose(1000, "");
    ASSERT_TRUE(world->runUntil([&] {
        const auto held = delegate.lock();
        return !held || held->has("failed receive");
    }));
    ASSERT_TRUE(world->runUntil([&] { return delegate.expired(); }));
    EXPECT_GE(world->now() - start, world->delegateHoldTime());
}

TEST_P(WebSocketConformance, ATaskThatNobodyHoldsGoesOn) {
    open();
    recorder->receive(*task);
    task.reset();
    session.reset();
    world->sendText("still there");
    ASSERT_TRUE(comes("text still there"));
}

INSTANTIATE_TEST_SUITE_P(Worlds, WebSocketConformance,
                         testing::Values(WebSocketWorldMaker{"Simulated",
                                                             makeSimulatedWebSocketWorld},
                                         realWebSocketWorld()),
                         nameOf);

}  // namespace

}  // namespace tarvik::tests
