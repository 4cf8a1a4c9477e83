// SPDX-License-Identifier: MIT

#include <atomic>
#include <utility>

#include "tests/linux/websocket/BeastTest.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using WebSocketSession = BeastTest;

class WebSocketShutdown : public BeastTest {
  protected:
    /// Destroys the service, which must return at once. No event may follow, and the delegate must
    /// be released.
    void expectCleanEnd() {
        const Seconds start = world.now();
        world.endService();
        // Less than every timeout of the service.
        EXPECT_LT(world.now() - start, Seconds(0.25));
        const auto before = recorder->events();
        world.settle();
        EXPECT_EQ(recorder->events(), before);
        EXPECT_EQ(recorder.use_count(), 1);
    }
};

TEST_F(WebSocketShutdown, WithAnOpenConnection) {
    open();
    expectCleanEnd();
    EXPECT_TRUE(world.peer().readEnd());
}

TEST_F(WebSocketShutdown, WhileConnecting) {
    const Listener unresponsive("127.0.0.1", 0, true);
    platform::UrlRequest request = world.request();
    request.url = "wss://127.0.0.1:" + std::to_string(unresponsive.port()) + "/";
    start(request);
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, DuringTheTlsHandshake) {
    start();
    const Peer silent = world.listener().accept();
    world.settle();
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, DuringTheUpgrade) {
    start();
    ASSERT_TRUE(world.acceptTls());
    world.peer().readHead();
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, WhileASendIsStuck) {
    open();
    task->send({platform::WebSocketMessage::Kind::data, std::string(std::size_t{32} << 20, 'a')},
               [](const auto&) {});
    world.settle();
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, DuringACloseHandshake) {
    open();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, WhileTheDelegateIsHeld) {
    open();
    world.sendClose(1000, "");
    ASSERT_TRUE(comes("failed receive"));
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, BeforeTheStart) {
    session = world.service().makeSession(recorder);
    task = session->webSocketTask(world.request());
    expectCleanEnd();
}

TEST_F(WebSocketShutdown, TasksThatAreLeftDoNothing) {
    open();
    world.endService();
    const std::size_t events = recorder->events().size();
    task->resume();
    task->cancel(platform::closeCodeGoingAway);
    recorder->sendText(*task, "late");
    recorder->receive(*task);
    const auto another = session->webSocketTask(world.request());
    another->resume();
    world.settle();
    EXPECT_EQ(recorder->events().size(), events);
}

TEST_F(WebSocketShutdown, ATaskThatIsMadeLaterDoesNotHoldTheDelegate) {
    open();
    world.endService();
    const auto late = session->webSocketTask(world.request());
    late->resume();
    EXPECT_EQ(recorder.use_count(), 1);
}

TEST_F(WebSocketSession, ANewConnectionExtendsTheHoldOfTheDelegate) {
    open();
    world.sendClose(1000, "");
    ASSERT_TRUE(comes("failed receive"));
    const auto second = session->webSocketTask(world.request());
    second->resume();
    recorder->receiveAll(second);
    world.accept("token");
    ASSERT_TRUE(comes("open token", 2));
    const std::weak_ptr<WebSocketRecorder> delegate = recorder;
    recorder.reset();
    const Seconds longEnough = world.now() + 2 * world.delegateHoldTime();
    world.runUntil([&] { return world.now() > longEnough; });
    ASSERT_FALSE(delegate.expired());
    second->cancel(platform::closeCodeGoingAway);
    EXPECT_TRUE(world.runUntil([&] { return delegate.expired(); }));
}

/// A delegate that owns its session and its task, as clients of the service do.
class OwningDelegate final : public platform::WebSocketSessionDelegate {
  public:
    explicit OwningDelegate(std::atomic<bool>& isDestroyed) : isDestroyed_(isDestroyed) {}
    ~OwningDelegate() override {
        task.reset();
        session.reset();
        isDestroyed_ = true;
    }
    OwningDelegate(const OwningDelegate&) = delete;
    OwningDelegate& operator=(const OwningDelegate&) = delete;

    void didOpen(platform::WebSocketTask& /*task*/, const std::string& /*protocol*/) override {}
    void didClose(platform::WebSocketTask& /*task*/, int /*closeCode*/,
                  const std::string& /*reason*/) override {}

    std::shared_ptr<platform::WebSocketSession> session;
    std::shared_ptr<platform::WebSocketTask> task;

  private:
    std::atomic<bool>& isDestroyed_;
};

TEST_F(WebSocketSession, ADelegateThatOwnsItsSessionGoesOnTheSessionsThread) {
    std::atomic<bool> isDestroyed = false;
    auto delegate = std::make_shared<OwningDelegate>(isDestroyed);
    delegate->session = world.service().makeSession(delegate);
    delegate->task = delegate->session->webSocketTask(world.request());
    delegate->task->resume();
    delegate.reset();
    world.accept("token");
    EXPECT_FALSE(isDestroyed);
    world.sendClose(1000, "");
    EXPECT_TRUE(world.runUntil([&] { return isDestroyed.load(); }));
}

TEST_F(WebSocketSession, HoldsItsDelegateBeyondTheDeadlineOfAnOrderlyClose) {
    constexpr double closeDeadline = 2.0;
    RecordingLog log;
    linuxdesktop::BeastWebSocketService service(log);
    platform::UrlRequest nowhere = world.request();
    nowhere.url = "not an address";
    auto delegate = std::make_shared<WebSocketRecorder>();
    service.makeSession(delegate)->webSocketTask(nowhere)->resume();
    const std::weak_ptr<WebSocketRecorder> watched = std::exchange(delegate, nullptr);
    // The server accepts nothing, so the request below lasts as long as its timeout.
    platform::UrlRequest silent = world.request();
    silent.timeoutInterval = closeDeadline;
    start(silent);
    ASSERT_TRUE(failed("did not open"));
    EXPECT_FALSE(watched.expired());
}

TEST_F(WebSocketSession, ManyConnectionsAfterOneAnother) {
    constexpr std::size_t connections = 20;
    for (std::size_t count = 1; count <= connections; ++count) {
        start();
        world.accept("token");
        ASSERT_TRUE(comes("open token", count));
        world.sendClose(1000, "");
        ASSERT_TRUE(comes("failed receive", count));
    }
}

}  // namespace

}  // namespace tarvik::tests
