// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/BeastTest.h"
#include "tests/linux/websocket/HeldLookup.h"

namespace tarvik::tests {

namespace {

/// A recording by name, and then others, whose name lookup the test holds.
class WebSocketKnownAddress : public BeastTest {
  protected:
    void SetUp() override {
        startByName();
        world.accept("token");
        ASSERT_TRUE(comes("open token"));
    }

    void startByName() {
        platform::UrlRequest request = world.request();
        request.url = "wss://localhost:" + std::to_string(world.listener().port()) + "/";
        start(request);
    }
};

TEST_F(WebSocketKnownAddress, IsConnectedToDuringTheLookup) {
    HeldLookup lookup;
    startByName();
    Peer peer = world.listener().accept();
    ASSERT_TRUE(peer.startTls(world.serverContext()));
    lookup.answer("127.0.0.1");
    peer.write(Peer::upgradeResponse(peer.readHead(), "token"));
    EXPECT_TRUE(comes("open token", 2));
    EXPECT_FALSE(world.listener().hasConnection());
}

TEST_F(WebSocketKnownAddress, MayBeNamedInTheMiddleOfTheTlsHandshake) {
    HeldLookup lookup;
    startByName();
    Peer peer = world.listener().accept();
    lookup.answer("127.0.0.1");
    ASSERT_TRUE(peer.startTls(world.serverContext()));
    peer.write(Peer::upgradeResponse(peer.readHead(), "token"));
    EXPECT_TRUE(comes("open token", 2));
}

TEST_F(WebSocketKnownAddress, GetsNoRequestBeforeTheLookupNamesIt) {
    HeldLookup lookup;
    startByName();
    Peer peer = world.listener().accept();
    ASSERT_TRUE(peer.startTls(world.serverContext()));
    lookup.answer("::1");
    EXPECT_TRUE(peer.readEnd());
    EXPECT_TRUE(comes("failed receive"));
    EXPECT_EQ(recorder->lastError().code, ECONNREFUSED);
}

// Somebody else may have the address by now.
TEST_F(WebSocketKnownAddress, IsConnectedToAgainWhenItBreaksOffBeforeTheLookupNamesIt) {
    HeldLookup lookup;
    startByName();
    {
        PlainPeer stranger(world.listener().acceptSocket());
        stranger.write("this is no TLS at all");
        // The client ends the connection.
        EXPECT_EQ(stranger.readHead(), "");
    }
    lookup.answer("127.0.0.1");
    world.accept("token");
    EXPECT_TRUE(comes("open token", 2));
}

TEST_F(WebSocketKnownAddress, IsLeftWhenTheRecordingEndsDuringTheLookup) {
    const HeldLookup lookup;
    startByName();
    Peer peer = world.listener().accept();
    task->cancel(platform::closeCodeGoingAway);
    // The TLS handshake may have begun, and then the connection ends within it.
    EXPECT_EQ(peer.readHead(), "");
}

}  // namespace

}  // namespace tarvik::tests
