// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/TrustStore.h"
#include "tests/linux/loop/ThreadShortage.h"
#include "tests/linux/websocket/BeastTest.h"
#include "tests/linux/websocket/DescriptorShortage.h"

namespace tarvik::tests {

namespace {

using WebSocketConnector = BeastTest;

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(WebSocketConnector, SendsTheHandshakeByteForByte) {
    platform::UrlRequest request = world.request();
    request.headerFields = {{"Sec-WebSocket-Protocol", "token,  a key with blanks \t "},
                            {"X-Other", " one "}};
    start(request);
    world.accept("token");
    ASSERT_TRUE(comes("open token"));
    const std::string& head = world.head();
    EXPECT_TRUE(head.starts_with("GET /v1/listen?a=b%20c HTTP/1.1\r\n")) << head;
    EXPECT_EQ(occurrences(head, "\r\nSec-WebSocket-Protocol: token,  a key with blanks \t \r\n"),
              1U)
        << head;
    EXPECT_EQ(occurrences(head, "Sec-WebSocket-Protocol"), 1U);
    EXPECT_EQ(occurrences(head, "\r\nX-Other:  one \r\n"), 1U) << head;
    EXPECT_EQ(occurrences(head, "\r\nUser-Agent: TarvikDictate/"), 1U) << head;
    const std::string port = std::to_string(world.listener().port());
    EXPECT_EQ(occurrences(head, "\r\nHost: 127.0.0.1:" + port + "\r\n"), 1U) << head;
}

TEST_F(WebSocketConnector, AsksForTheServerByName) {
    platform::UrlRequest request = world.request();
    request.url = "WSS://localhost:" + std::to_string(world.listener().port());
    start(request);
    world.accept("token");
    ASSERT_TRUE(comes("open token"));
    EXPECT_EQ(world.peer().serverName(), "localhost");
    EXPECT_TRUE(world.head().starts_with("GET / HTTP/1.1\r\n"));
    EXPECT_EQ(world.keyAnswers(), std::vector<bool>{true});
}

TEST_F(WebSocketConnector, ReadsAMessageThatComesWithTheUpgradeResponse) {
    start();
    ASSERT_TRUE(world.acceptTls());
    const std::string head = world.peer().readHead();
    world.peer().write(Peer::upgradeResponse(head, "token") + Peer::frame(Peer::text, "at once"));
    ASSERT_TRUE(comes("text at once"));
    EXPECT_EQ(recorder->events().front(), "open token");
}

TEST_F(WebSocketConnector, ARefusedUpgradeTellsStatusAndBody) {
    start();
    ASSERT_TRUE(world.acceptTls());
    world.peer().readHead();
    const std::string body = "{\"err_code\":\"INVALID_AUTH\",\r\n  \"err_msg\":\"\x01no\"}";
    world.peer().write("HTTP/1.1 401 Unauthorized\r\nContent-Length: " +
                       std::to_string(body.size()) + "\r\n\r\n" + body);
    ASSERT_TRUE(
        failed("The service refused the web socket: HTTP 401 Unauthorized: "
               "{\"err_code\":\"INVALID_AUTH\", \"err_msg\":\" no\"}"));
    EXPECT_EQ(recorder->lastError().code, 401);
    EXPECT_EQ(world.keyAnswers(), std::vector<bool>{false});
    world.settle();
    EXPECT_EQ(recorder->events().size(), 1U);
}

TEST_F(WebSocketConnector, ARefusalMayEndWithTheConnectionAndIsCutShort) {
    start();
    ASSERT_TRUE(world.acceptTls());
    world.peer().readHead();
    world.peer().write("HTTP/1.1 503 Busy\r\n\r\n" + std::string(100'000, 'A'));
    world.peer().end();
    ASSERT_TRUE(failed("HTTP 503 Busy: AAAA"));
    EXPECT_EQ(world.keyAnswers(), std::vector<bool>{}) << "such a refusal says nothing of the key";
    EXPECT_LT(recorder->lastError().localizedDescription.size(), 600U);
}

TEST_F(WebSocketConnector, AnAnswerThatIsNoWebSocketFailsTheOpening) {
    start();
    ASSERT_TRUE(world.acceptTls());
    const std::string head = world.peer().readHead();
    std::string answer = Peer::upgradeResponse(head, "token");
    answer.replace(answer.find("Accept: ") + 8, 4, "AAAA");
    world.peer().write(answer);
    ASSERT_TRUE(failed("The service broke the opening of the web socket off"));
}

TEST_F(WebSocketConnector, AnAnswerThatIsNotHttpFailsTheOpening) {
    start();
    ASSERT_TRUE(world.acceptTls());
    world.peer().readHead();
    world.peer().write("220 mail.example ESMTP\r\n\r\n");
    ASSERT_TRUE(failed("The service broke the opening of the web socket off"));
}

TEST_F(WebSocketConnector, AServerWithoutTlsFailsTheOpening) {
    start();
    Peer peer = world.listener().accept();
    peer.write("HTTP/1.1 400 Bad Request\r\n\r\n");
    ASSERT_TRUE(failed("No secure connection to 127.0.0.1"));
}

TEST_F(WebSocketConnector, TheTimeoutCoversASilentServer) {
    platform::UrlRequest request = world.request();
    request.timeoutInterval = 0.2;
    start(request);
    ASSERT_TRUE(world.acceptTls());
    world.peer().readHead();
    ASSERT_TRUE(failed("did not open within 0.2 s"));
    EXPECT_EQ(recorder->lastError().code, ETIMEDOUT);
    EXPECT_TRUE(world.peer().readEnd());
}

TEST_F(WebSocketConnector, NothingListening) {
    platform::UrlRequest request = world.request();
    {
        const Listener gone("127.0.0.1");
        request.url = "wss://127.0.0.1:" + std::to_string(gone.port()) + "/";
    }
    start(request);
    ASSERT_TRUE(failed("Connection refused"));
    EXPECT_EQ(recorder->lastError().code, ECONNREFUSED);
}

TEST_F(WebSocketConnector, AHostThatIsNotFoundFailsTheOpeningWithTheReasonOfTheLookup) {
    // A label of a name has at most 63 characters, so that no name server is asked.
    const std::string host = std::string(64, 'a') + ".invalid";
    platform::UrlRequest request = world.request();
    request.url = "wss://" + host + "/";
    start(request);
    ASSERT_TRUE(failed("The host " + host + " was not found: "));
}

TEST_F(WebSocketConnector, ALookupWithoutAThreadFailsTheOpening) {
    platform::UrlRequest request = world.request();
    request.url = "wss://localhost:" + std::to_string(world.listener().port());
    // The session's own thread still starts.
    const ThreadShortage shortage(1);
    start(request);
    ASSERT_TRUE(failed("No thread for looking up localhost"));
    EXPECT_EQ(recorder->lastError().code, EAGAIN);
}

TEST_F(WebSocketConnector, ASessionWithoutAThreadWaitsForOneWithOneLine) {
    {
        const ThreadShortage shortage;
        start();
        recorder->sendText(*task, "early");
    }
    EXPECT_EQ(world.logLines(),
              std::vector<std::string>{"TarvikDictate: no thread for the connection to the "
                                       "service: Resource temporarily unavailable"});
    recorder->sendText(*task, "late");
    world.accept("token");
    ASSERT_TRUE(comes("sent late"));
    EXPECT_EQ(recorder->events(),
              (std::vector<std::string>{"open token", "sent early", "sent late"}));
}

TEST_F(WebSocketConnector, ASessionThatNeverGetsAThreadLeavesNothingBehind) {
    {
        const ThreadShortage shortage;
        start();
    }
    world.endService();
    session.reset();
    task.reset();
    EXPECT_EQ(recorder.use_count(), 1);
    EXPECT_TRUE(recorder->events().empty());
}

TEST_F(WebSocketConnector, ASessionWithoutDescriptorsWaitsForThemWithOneLine) {
    open();  // The trust store has been read then.
    {
        const DescriptorShortage shortage;
        start();
        recorder->sendText(*task, "early");
    }
    EXPECT_EQ(world.logLines(),
              std::vector<std::string>{"TarvikDictate: no thread for the connection to the "
                                       "service: Too many open files"});
    recorder->sendText(*task, "late");
    world.accept("token");
    ASSERT_TRUE(comes("sent late"));
}

TEST_F(WebSocketConnector, AConnectionWithoutADescriptorFailsTheOpening) {
    open();
    task->cancel(platform::closeCodeGoingAway);
    ASSERT_TRUE(comes("failed receive"));
    recorder = std::make_shared<WebSocketRecorder>();
    // The descriptors of the session itself are open.
    const DescriptorShortage shortage;
    task = session->webSocketTask(world.request());
    task->resume();
    recorder->receiveAll(task);
    EXPECT_TRUE(failed("Too many open files"));
}

TEST_F(WebSocketConnector, OnlyWholeWssUrlsAreOpened) {
    for (const char* url : {"https://127.0.0.1/", "wss://", "wss://127.0.0.1:0/", "wss://a:b/",
                            "wss://user@127.0.0.1/", "wss://127.0.0.1/#part", "wss://[::1/",
                            "wss://127.0.0.1/a b", "wss://127.0.0.1/\r\nEvil: yes"}) {
        recorder = std::make_shared<WebSocketRecorder>();
        platform::UrlRequest request = world.request();
        request.url = url;
        start(request);
        EXPECT_TRUE(failed("The address is not a wss URL")) << url;
    }
}

TEST_F(WebSocketConnector, AControlCharacterInAHeaderNeverReachesTheWire) {
    for (const std::string& key :
         {std::string("a\nb"), std::string("a\rb"), std::string("a\0b", 3), std::string("a\x7F")}) {
        recorder = std::make_shared<WebSocketRecorder>();
        platform::UrlRequest request = world.request();
        request.headerFields = {{"Sec-WebSocket-Protocol", "token, " + key}};
        start(request);
        EXPECT_TRUE(failed("The header field Sec-WebSocket-Protocol has a line break"));
    }
    world.settle();
    EXPECT_FALSE(world.listener().hasConnection());
}

TEST_F(WebSocketConnector, AKeyTooLongForTheHandshakeFailsTheOpening) {
    for (const std::size_t size : {65'400U, 65'530U, 65'536U, 1'000'000U}) {
        recorder = std::make_shared<WebSocketRecorder>();
        platform::UrlRequest request = world.request();
        request.headerFields = {{"Sec-WebSocket-Protocol", "token, " + std::string(size, 'k')}};
        start(request);
        if (size < 65'500) {
            world.accept("token");
            EXPECT_TRUE(comes("open token"));
            EXPECT_EQ(occurrences(world.head(), std::string(size, 'k')), 1U);
        } else {
            EXPECT_TRUE(failed("The header field Sec-WebSocket-Protocol is too long")) << size;
        }
    }
    EXPECT_FALSE(world.listener().hasConnection());
}

TEST_F(WebSocketConnector, ReachesAServerThatHasOnlyIpv6) {
    Listener listener("::1");
    platform::UrlRequest request = world.request();
    request.url = "wss://[::1]:" + std::to_string(listener.port()) + "/v1/listen";
    start(request);
    Peer peer = listener.accept();
    ASSERT_TRUE(peer.startTls(world.serverContext()));
    const std::string head = peer.readHead();
    EXPECT_EQ(occurrences(head, "\r\nHost: [::1]:" + std::to_string(listener.port()) + "\r\n"), 1U);
    peer.write(Peer::upgradeResponse(head, "token"));
    ASSERT_TRUE(comes("open token"));
}

class WebSocketCertificates : public testing::Test {
  protected:
    /// The error of a connection to a server with `certificate`. The client must not have sent a
    /// request before the error.
    static std::string verifyErrorOf(const TestCertificate& certificate) {
        BeastWorld world(certificate);
        const auto recorder = std::make_shared<WebSocketRecorder>();
        const auto task = world.service().makeSession(recorder)->webSocketTask(world.request());
        task->resume();
        recorder->receive(*task);
        // With TLS 1.3 the server's handshake ends before the client verifies the certificate.
        if (world.acceptTls() && !world.peer().readHead().empty()) {
            return "the client went on";
        }
        world.runUntil([&] { return recorder->has("failed receive"); });
        return recorder->lastError().localizedDescription;
    }
};

TEST(WebSocketTrustStore, AllowsNothingBelowTls12) {
    linuxdesktop::TrustStore store;
    EXPECT_EQ(SSL_CTX_get_min_proto_version(store.sslContext().native_handle()), TLS1_2_VERSION);
}

TEST_F(WebSocketCertificates, OfAStrangeAuthority) {
    EXPECT_EQ(
        verifyErrorOf({.names = "IP:127.0.0.1", .isTrusted = false}),
        "The certificate of 127.0.0.1 does not verify: unable to get local issuer certificate");
}

TEST(WebSocketAuthority, IsTrustedBesideThoseOfTheSystem) {
    for (const bool isTrustedBySystem : {false, true}) {
        BeastWorld world({.names = "IP:127.0.0.1", .isTrusted = isTrustedBySystem});
        world.restartService(strangeAuthorityFile());
        const auto recorder = std::make_shared<WebSocketRecorder>();
        const auto session = world.service().makeSession(recorder);
        const auto task = session->webSocketTask(world.request());
        task->resume();
        world.accept("token");
        EXPECT_TRUE(world.runUntil([&] { return recorder->has("open token"); }));
        EXPECT_EQ(world.logLines(), std::vector<std::string>{});
    }
}

TEST(WebSocketAuthority, ThatIsMissingIsToldInTheLog) {
    BeastWorld world;
    world.restartService("/nowhere/ca.pem");
    ASSERT_TRUE(world.runUntil([&] { return !world.logLines().empty(); }));
    EXPECT_TRUE(world.logLines().front().starts_with(
        "TarvikDictate: the authority in /nowhere/ca.pem is not trusted: "))
        << world.logLines().front();
}

TEST_F(WebSocketCertificates, OfAnotherHost) {
    EXPECT_EQ(verifyErrorOf({.names = "DNS:localhost,IP:127.0.0.2"}),
              "The certificate of 127.0.0.1 does not verify: IP address mismatch");
}

TEST_F(WebSocketCertificates, ThatHasExpired) {
    EXPECT_EQ(verifyErrorOf({.names = "IP:127.0.0.1", .validity = -60}),
              "The certificate of 127.0.0.1 does not verify: certificate has expired");
}

TEST_F(WebSocketCertificates, OfAnotherName) {
    BeastWorld world({.names = "DNS:other.example,DNS:*.localhost"});
    const auto recorder = std::make_shared<WebSocketRecorder>();
    platform::UrlRequest request = world.request();
    request.url = "wss://localhost:" + std::to_string(world.listener().port());
    const auto task = world.service().makeSession(recorder)->webSocketTask(request);
    task->resume();
    recorder->receive(*task);
    world.acceptTls();
    ASSERT_TRUE(world.runUntil([&] { return recorder->has("failed receive"); }));
    EXPECT_EQ(recorder->lastError().localizedDescription,
              "The certificate of localhost does not verify: hostname mismatch");
}

}  // namespace

}  // namespace tarvik::tests
