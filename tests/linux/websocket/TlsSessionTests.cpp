// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/BeastTest.h"

namespace tarvik::tests {

namespace {

/// Whether each connection resumes the TLS session of an earlier one.
class WebSocketTlsSession : public BeastTest {
  protected:
    /// Opens one more connection; returns whether its handshake was short.
    bool isResumed() { return isResumed(world.request()); }

    bool isResumed(const platform::UrlRequest& request) {
        start(request);
        world.accept("token");
        EXPECT_TRUE(comes("open token", ++openCount_));
        return world.peer().isResumed();
    }

    platform::UrlRequest requestByName() {
        platform::UrlRequest request = world.request();
        request.url = "wss://localhost:" + std::to_string(world.listener().port()) + "/";
        return request;
    }

    void setTicketCount(std::size_t count) {
        SSL_CTX_set_num_tickets(world.serverContext(), count);
    }

  private:
    std::size_t openCount_ = 0;
};

TEST_F(WebSocketTlsSession, IsResumedByEveryLaterConnection) {
    EXPECT_FALSE(isResumed());
    EXPECT_TRUE(isResumed());
    EXPECT_TRUE(isResumed());
}

TEST_F(WebSocketTlsSession, IsResumedWithTls12Too) {
    SSL_CTX_set_max_proto_version(world.serverContext(), TLS1_2_VERSION);
    EXPECT_FALSE(isResumed());
    EXPECT_TRUE(isResumed());
}

TEST_F(WebSocketTlsSession, BelongsToOneHost) {
    EXPECT_FALSE(isResumed());
    EXPECT_FALSE(isResumed(requestByName()));
    EXPECT_TRUE(isResumed(requestByName()));
    EXPECT_TRUE(isResumed());
}

TEST_F(WebSocketTlsSession, IsUsedOnce) {
    setTicketCount(1);
    EXPECT_FALSE(isResumed());
    setTicketCount(0);
    EXPECT_TRUE(isResumed());
    EXPECT_FALSE(isResumed());
}

TEST_F(WebSocketTlsSession, ThatTheServerHasForgottenCostsNothing) {
    EXPECT_FALSE(isResumed());
    SSL_CTX_set_options(world.serverContext(), SSL_OP_NO_TICKET);
    EXPECT_FALSE(isResumed());
}

TEST_F(WebSocketTlsSession, EndsWithTheService) {
    EXPECT_FALSE(isResumed());
    world.restartService();
    EXPECT_FALSE(isResumed());
}

TEST(WebSocketTlsSessionCertificate, ThatHasExpiredSinceIsNotTrusted) {
    constexpr long validity = 3;
    BeastWorld world({.names = "IP:127.0.0.1", .validity = validity});
    const Seconds expiry = world.now() + Seconds(validity + 1);
    const auto connect = [&world] {
        auto recorder = std::make_shared<WebSocketRecorder>();
        const auto task = world.service().makeSession(recorder)->webSocketTask(world.request());
        task->resume();
        recorder->receive(*task);
        return recorder;
    };
    const auto first = connect();
    world.accept("token");
    ASSERT_TRUE(world.runUntil([&] { return first->has("open token"); }));
    ASSERT_TRUE(world.runUntil([&] { return world.now() > expiry; }));
    const auto second = connect();
    world.acceptTls();
    EXPECT_FALSE(world.peer().isResumed());
    ASSERT_TRUE(world.runUntil([&] { return second->has("failed receive"); }));
    EXPECT_EQ(second->lastError().localizedDescription,
              "The certificate of 127.0.0.1 does not verify: certificate has expired");
}

}  // namespace

}  // namespace tarvik::tests
