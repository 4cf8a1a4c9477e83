#include <atomic>

#include "tests/linux/websocket/BeastTest.h"

namespace tarvik::tests {

namespace {

class WebSocketServiceEnd : public BeastTest {
  protected:
    /// Ends the service; it takes no time, nothing comes afterwards, and the delegate is let go.
    void expectCleanEnd() {
        const Seconds start = world.now();
        world.endService();
        EXPECT_LT(world.now() - start, Seconds(0.1));
        const auto before = recorder->events();
        world.settle();
        EXPECT_EQ(recorder->events(), before);
        EXPECT_EQ(recorder.use_count(), 1);
    }
};

TEST_F(WebSocketServiceEnd, WithAnOpenConnection) {
    open();
    expectCleanEnd();
    EXPECT_TRUE(world.peer().readEnd());
}

TEST_F(WebSocketServiceEnd, WhileConnecting) {
    const Listener deaf("127.0.0.1", 0, true);
    platform::UrlRequest request = world.request();
    request.url = "wss://127.0.0.1:" + std::to_string(deaf.port()) + "/";
    start(request);
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, DuringTheTlsHandshake) {
    start();
    const Peer silent = world.listener().accept();
    world.settle();
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, DuringTheUpgrade) {
    start();
    ASSERT_TRUE(world.acceptTls());
    world.peer().readHead();
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, WhileASendIsStuck) {
    open();
    task->send({platform::WebSocketMessage::Kind::data, std::string(std::size_t{32} << 20, 'a')},
               [](const auto&) {});
    world.settle();
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, DuringAFarewell) {
    open();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, WhileADelegateLingers) {
    open();
    world.sendClose(1000, "");
    ASSERT_TRUE(comes("failed receive"));
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, BeforeTheStart) {
    session = world.service().makeSession(recorder);
    task = session->webSocketTask(world.request());
    expectCleanEnd();
}

TEST_F(WebSocketServiceEnd, TasksThatAreLeftDoNothing) {
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

TEST_F(BeastTest, ANewConnectionProlongsTheHoldOnTheDelegate) {
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

/// A delegate that owns its session and its task, as clients do.
class OwningDelegate final : public platform::WebSocketSessionDelegate {
  public:
    explicit OwningDelegate(std::atomic<bool>& isGone) : isGone_(isGone) {}
    ~OwningDelegate() override {
        task.reset();
        session.reset();
        isGone_ = true;
    }
    OwningDelegate(const OwningDelegate&) = delete;
    OwningDelegate& operator=(const OwningDelegate&) = delete;

    void didOpen(platform::WebSocketTask& /*task*/, const std::string& /*protocol*/) override {}
    void didClose(platform::WebSocketTask& /*task*/, int /*closeCode*/,
                  const std::string& /*reason*/) override {}

    std::shared_ptr<platform::WebSocketSession> session;
    std::shared_ptr<platform::WebSocketTask> task;

  private:
    std::atomic<bool>& isGone_;
};

TEST_F(BeastTest, ADelegateThatOwnsItsSessionGoesOnTheSessionsThread) {
    std::atomic<bool> isGone = false;
    auto delegate = std::make_shared<OwningDelegate>(isGone);
    delegate->session = world.service().makeSession(delegate);
    delegate->task = delegate->session->webSocketTask(world.request());
    delegate->task->resume();
    delegate.reset();
    world.accept("token");
    EXPECT_FALSE(isGone);
    world.sendClose(1000, "");
    EXPECT_TRUE(world.runUntil([&] { return isGone.load(); }));
}

TEST_F(BeastTest, ManyConnectionsAfterOneAnother) {
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
