// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <simdjson.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <future>
#include <iostream>
#include <streambuf>
#include <thread>

#include "tests/linux/loop/ThreadShortage.h"
#include "tests/speech-service/ListenClient.h"
#include "tests/speech-service/RunningServer.h"
#include "tests/speech-service/ScriptedEngine.h"

namespace tarvik::service {

namespace {

class Refusal : public testing::Test {
  protected:
    void expectRefused(const ListenClient& client, unsigned status, const std::string& code) {
        EXPECT_EQ(client.response().result_int(), status);
        EXPECT_EQ(client.response()[boost::beast::http::field::content_type], "application/json");
        simdjson::dom::parser parser;
        const simdjson::dom::element body =
            parser.parse(simdjson::padded_string(client.response().body()));
        EXPECT_EQ(body["err_code"].get_string().value(), code);
        EXPECT_FALSE(body["err_msg"].get_string().value().empty());
        EXPECT_FALSE(body["request_id"].get_string().value().empty());
        EXPECT_EQ(client.response()["dg-request-id"],
                  std::string(body["request_id"].get_string().value()));
        EXPECT_EQ(client.response()["dg-error"], std::string(body["err_msg"].get_string().value()));
    }

    RunningServer server_{{}, std::make_shared<ScriptedEngine>()};
};

/// Counts the lines on std::cerr instead of printing them, until its destruction.
class LineCounter : private std::streambuf {
  public:
    LineCounter() : before_(std::cerr.rdbuf(this)) {}
    ~LineCounter() override { std::cerr.rdbuf(before_); }
    LineCounter(const LineCounter&) = delete;
    LineCounter& operator=(const LineCounter&) = delete;

    int lines() const { return lines_; }

  private:
    int_type overflow(int_type character) override {
        lines_ += traits_type::eq_int_type(character, '\n') ? 1 : 0;
        return traits_type::not_eof(character);
    }

    std::streambuf* before_;
    std::atomic<int> lines_ = 0;
};

/// The number of the next descriptor.
int lowestFreeDescriptor() {
    const int lowest = dup(STDERR_FILENO);
    close(lowest);
    return lowest;
}

/// Keeps this process from opening descriptors until its destruction.
class NoMoreDescriptors {
  public:
    NoMoreDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit limit{static_cast<rlim_t>(lowestFreeDescriptor()), before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    NoMoreDescriptors(const NoMoreDescriptors&) = delete;
    NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

  private:
    rlimit before_{};
};

TEST_F(Refusal, OfAMissingKey) {
    ListenClient client(server_.port(), server_.authority());
    EXPECT_FALSE(client.open("/v1/listen?encoding=linear16&sample_rate=16000", ""));
    expectRefused(client, 401, "INVALID_AUTH");
}

TEST_F(Refusal, OfABadQuery) {
    ListenClient client(server_.port(), server_.authority());
    EXPECT_FALSE(client.open("/v1/listen?encoding=linear16&sample_rate=4000"));
    expectRefused(client, 400, "INVALID_QUERY_PARAMETER");
}

TEST_F(Refusal, OfAnotherPath) {
    ListenClient client(server_.port(), server_.authority());
    EXPECT_FALSE(client.open("/v1/speak"));
    expectRefused(client, 404, "NOT_FOUND");
}

TEST_F(Refusal, OfARequestWithoutUpgrade) {
    ListenClient client(server_.port(), server_.authority());
    client.request("/v1/listen?encoding=linear16&sample_rate=16000");
    expectRefused(client, 426, "UPGRADE_REQUIRED");
}

TEST_F(Refusal, OfAWebPage) {
    ListenClient client(server_.port(), server_.authority());
    client.requestByBytes(
        "GET /v1/listen?encoding=linear16&sample_rate=16000 HTTP/1.1\r\nHost: localhost\r\n"
        "Origin: https://page.example\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
        "Sec-WebSocket-Protocol: token, k\r\n\r\n");
    expectRefused(client, 403, "FORBIDDEN");
}

TEST_F(Refusal, OfARequestThatCannotBeRead) {
    ListenClient client(server_.port(), server_.authority());
    client.requestByBytes("no request at all\r\n\r\n");
    expectRefused(client, 400, "BAD_REQUEST");
}

TEST_F(Refusal, OfAConnectionWithoutTlsLeavesTheServiceAlive) {
    boost::asio::io_context context;
    boost::asio::ip::tcp::socket plain(context);
    plain.connect({boost::asio::ip::address_v4::loopback(), server_.port()});
    boost::asio::write(plain, boost::asio::buffer(std::string("GET / HTTP/1.1\r\n\r\n")));
    std::string answer;
    boost::system::error_code end;
    boost::asio::read(plain, boost::asio::dynamic_buffer(answer), end);
    EXPECT_TRUE(end);

    ListenClient client(server_.port(), server_.authority());
    EXPECT_TRUE(client.openAt(16000));
}

TEST(Service, RefusesMoreStreamsThanItServes) {
    ServerOptions options;
    options.maxStreams = 1;
    RunningServer server(options);
    ListenClient first(server.port(), server.authority());
    ASSERT_TRUE(first.openAt(16000));
    ListenClient second(server.port(), server.authority());
    EXPECT_FALSE(second.openAt(16000));
    EXPECT_EQ(second.response().result_int(), 429U);
    EXPECT_EQ(second.response()["dg-error"],
              "Too many streams are open; this service serves 1 at once");
}

/// A service for one stream, which has ended while its decoder was busy and stays so.
class EndedStream : public testing::Test {
  protected:
    void SetUp() override {
        engine_->understand("words", "words");
        engine_->blockSettling();
        engine_->forbidAbort();
    }
    void TearDown() override { engine_->letSettle(); }

    void endStream(const RunningServer& server) {
        {
            ListenClient client(server.port(), server.authority());
            ASSERT_TRUE(client.openAt(16000));
            client.sendAudio(speech("words", 16000, 0.2, 0.3));
            client.sendText(R"({"type":"Finalize"})");
            engine_->awaitSettling();
        }
        // The line says that the client is gone.
        while (lines_.lines() == 0) {
            std::this_thread::yield();
        }
    }

    static ServerOptions oneStream() {
        ServerOptions options;
        options.maxStreams = 1;
        return options;
    }

    const LineCounter lines_;
    const std::shared_ptr<ScriptedEngine> engine_ = std::make_shared<ScriptedEngine>();
};

TEST_F(EndedStream, LeavesItsRoomToTheNextOneThatWaits) {
    RunningServer server(oneStream(), engine_);
    endStream(server);
    ListenClient next(server.port(), server.authority());
    std::future<bool> isOpen =
        std::async(std::launch::async, [&next] { return next.openAt(16000); });
    EXPECT_EQ(isOpen.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    engine_->letSettle();
    EXPECT_TRUE(isOpen.get());
}

TEST_F(EndedStream, IsWaitedForNoLongerThanForAHandshake) {
    ServerOptions options = oneStream();
    options.handshakeTimeout = Seconds(3);
    RunningServer server(options, engine_);
    endStream(server);
    ListenClient next(server.port(), server.authority());
    EXPECT_FALSE(next.openAt(16000));
    EXPECT_EQ(next.response().result_int(), 429U);
    engine_->letSettle();
}

TEST_F(EndedStream, KeepsNobodyWaitingWhenTheServiceStops) {
    RunningServer server(oneStream(), engine_);
    endStream(server);
    ListenClient next(server.port(), server.authority());
    std::future<bool> isOpen =
        std::async(std::launch::async, [&next] { return next.openAt(16000); });
    EXPECT_EQ(isOpen.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    server.stop();
    EXPECT_FALSE(isOpen.get());
    engine_->letSettle();
    server.join();
}

TEST(Service, RefusesEveryStreamWhenStartedToDoSo) {
    ServerOptions options;
    options.refusal = 503;
    RunningServer server(options, std::make_shared<ScriptedEngine>());
    ListenClient client(server.port(), server.authority());
    EXPECT_FALSE(client.openAt(16000));
    EXPECT_EQ(client.response().result_int(), 503U);
}

TEST(Service, WaitsBetweenAttemptsWhileItCanAcceptNothing) {
    // Outlives the server, whose thread writes to std::cerr.
    const LineCounter failures;
    RunningServer server;
    const int unused = lowestFreeDescriptor();
    {
        // A stream that has ended has loaded the decoder, so no file is needed later.
        ListenClient first(server.port(), server.authority());
        ASSERT_TRUE(first.openAt(16000));
        first.sendText(R"({"type":"CloseStream"})");
        EXPECT_EQ(first.receiveAll().size(), 1U);
    }
    // Waits until the service has closed its end of the stream, too. A sanitizer opens descriptors
    // to inspect memory, and needs some that are free.
    while (lowestFreeDescriptor() > unused) {
        std::this_thread::yield();
    }
    boost::asio::io_context context;
    boost::asio::ip::tcp::socket late(context, boost::asio::ip::tcp::v4());
    const int before = failures.lines();
    {
        const NoMoreDescriptors noMore;
        const auto begin = std::chrono::steady_clock::now();
        late.connect({boost::asio::ip::address_v4::loopback(), server.port()});
        while (failures.lines() < before + 3) {
            ASSERT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
            std::this_thread::yield();
        }
        EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(200));
    }
    ListenClient next(server.port(), server.authority());
    EXPECT_TRUE(next.openAt(16000));
}

TEST(Service, WithoutAThreadAStreamEndsWith1011AndTheServiceGoesOn) {
    // Outlives the server, whose thread writes to std::cerr.
    const LineCounter lines;
    RunningServer server;
    {
        ListenClient client(server.port(), server.authority());
        const tests::ThreadShortage shortage;
        ASSERT_TRUE(client.openAt(16000));
        EXPECT_TRUE(client.receiveAll().empty());
        EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::internal_error);
    }
    EXPECT_EQ(lines.lines(), 1);
    ListenClient next(server.port(), server.authority());
    ASSERT_TRUE(next.openAt(16000));
    next.sendText(R"({"type":"CloseStream"})");
    EXPECT_EQ(next.receiveAll().size(), 1U);
}

TEST(Service, ListensOnBothLoopbackAddresses) {
    RunningServer server;
    boost::asio::io_context context;
    using boost::asio::ip::tcp;
    tcp::socket fourth(context);
    fourth.connect({boost::asio::ip::address_v4::loopback(), server.port()});
    EXPECT_TRUE(fourth.is_open());
    tcp::acceptor probe(context);
    boost::system::error_code unavailable;
    probe.open(tcp::v6(), unavailable);
    if (!unavailable) {
        probe.bind({boost::asio::ip::address_v6::loopback(), 0}, unavailable);
    }
    if (unavailable) {
        GTEST_SKIP() << "no IPv6 here: " << unavailable.message();
    }
    tcp::socket sixth(context);
    sixth.connect({boost::asio::ip::address_v6::loopback(), server.port()});
    EXPECT_TRUE(sixth.is_open());
}

}  // namespace

}  // namespace tarvik::service
