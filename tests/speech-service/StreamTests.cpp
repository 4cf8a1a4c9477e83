// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <chrono>
#include <functional>
#include <thread>

#include "tests/speech-service/ListenClient.h"
#include "tests/speech-service/RunningServer.h"
#include "tests/speech-service/ScriptedEngine.h"

namespace tarvik::service {

namespace {

constexpr const char* closeStream = R"({"type":"CloseStream"})";

ServerOptions closingAfter(std::chrono::milliseconds idleTimeout) {
    ServerOptions options;
    options.idleTimeout = idleTimeout;
    return options;
}

class Stream : public testing::Test {
  protected:
    // A client that waits for words sends no audio meanwhile, and a busy machine takes its time.
    RunningServer server_{closingAfter(std::chrono::minutes(1))};
};

TEST_F(Stream, SelectsTheTokenSubprotocol) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    EXPECT_EQ(client.response()[boost::beast::http::field::sec_websocket_protocol], "token");
}

TEST_F(Stream, NamesTheRequestAndSelectsNoSubprotocolForAKeyInAHeader) {
    ListenClient client(server_.port(), server_.authority());
    client.authorizeBy("Bearer a key");
    ASSERT_TRUE(client.open("/v1/listen?encoding=linear16&sample_rate=16000", ""));
    EXPECT_EQ(client.response().count(boost::beast::http::field::sec_websocket_protocol), 0U);
    EXPECT_EQ(client.response()["dg-request-id"].size(), 36U);
}

TEST_F(Stream, TellsWhenSpeechBeginsAndWhenNoWordCameAnyMore) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(
        client.open("/v1/listen?encoding=linear16&sample_rate=16000&interim_results=true"
                    "&vad_events=true&utterance_end_ms=1000"));
    client.sendAudio(speech("hello world", 16000, 1, 2.5));
    client.sendText(closeStream);
    std::vector<std::string> types;
    for (const Message& message : client.receiveAll()) {
        if (message.type != "Results" || message.isFinal) {
            types.push_back(message.type);
        }
    }
    EXPECT_EQ(types,
              (std::vector<std::string>{"SpeechStarted", "Results", "UtteranceEnd", "Metadata"}));
}

TEST_F(Stream, EndsNoSentenceAtAHesitation) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendAudio(speech("this is the first sentence", 16000, 0.5, 0.3));
    client.sendAudio(speech("this is the second sentence", 16000, 0, 1.5));
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()),
              "This is the first sentence this is the second sentence.");
}

TEST(BusyStream, IsAnsweredBeforeItsClientHangsUp) {
    const auto engine = std::make_shared<ScriptedEngine>();
    engine->understand("every word of it", "never");
    engine->blockSettling();
    RunningServer server({}, engine);
    ListenClient client(server.port(), server.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendLive(speech("thank you for your letter", 16000, 0, 0), 16000);
    const auto close = std::chrono::steady_clock::now();
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "Every word of it.");
    EXPECT_GE(std::chrono::steady_clock::now() - close, std::chrono::milliseconds(1500));
    EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::normal);
    engine->letSettle();
}

TEST_F(Stream, AnswersEverythingThatWasSpokenAndThenClosesWith1000) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    // No pause ends the utterance before the close.
    client.sendAudio(speech("thank you for your letter", 16000, 0.3, 0));
    client.sendText(closeStream);
    const std::vector<Message> messages = client.receiveAll();
    EXPECT_EQ(finalText(messages), "Thank you for your letter.");
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back().type, "Metadata");
    EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::normal);
}

TEST_F(Stream, TellsInterimResultsBeforeTheFinalOneOfEachUtterance) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendAudio(speech("this is the first sentence", 16000, 0.5, 1));
    client.sendAudio(speech("this is the second sentence", 16000, 0, 1));
    client.sendText(closeStream);
    const std::vector<Message> messages = client.receiveAll();
    std::vector<int> interimsBeforeFinals{0};
    for (const Message& message : messages) {
        if (message.type == "Results" && message.isFinal) {
            interimsBeforeFinals.push_back(0);
        } else if (message.type == "Results") {
            EXPECT_FALSE(message.transcript.empty());
            EXPECT_FALSE(message.isSpeechFinal);
            ++interimsBeforeFinals.back();
        }
    }
    ASSERT_EQ(interimsBeforeFinals.size(), 3U);
    EXPECT_GE(interimsBeforeFinals[0], 1);
    EXPECT_GE(interimsBeforeFinals[1], 1);
    EXPECT_EQ(interimsBeforeFinals[2], 0);
    EXPECT_EQ(finalText(messages), "This is the first sentence. This is the second sentence.");
}

TEST_F(Stream, TellsNoInterimResultsUnlessAsked) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.open("/v1/listen?encoding=linear16&sample_rate=16000"));
    client.sendAudio(speech("hello world", 16000, 0.5, 1));
    client.sendText(closeStream);
    const std::vector<Message> messages = client.receiveAll();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].transcript, "hello world");
    EXPECT_EQ(messages[1].type, "Metadata");
}

TEST_F(Stream, PlacesUtterancesInTheAudio) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    const Audio spoken = speech("the weather is nice today", 16000, 2, 1.5);
    client.sendAudio(spoken);
    client.sendText(closeStream);
    const std::vector<Message> messages = client.receiveAll();
    ASSERT_GE(messages.size(), 2U);
    const Message& final = messages[messages.size() - 2];
    ASSERT_TRUE(final.isFinal);
    EXPECT_NEAR(final.start, 2.0, 0.3);
    const double length = static_cast<double>(spoken.size()) / 2 / 16000;
    EXPECT_NEAR(final.start + final.duration, length - 1, 0.4);
    EXPECT_GT(final.confidence, 0.3);
    EXPECT_LE(final.confidence, 1);
    ASSERT_EQ(final.wordStarts.size(), 5U);
    EXPECT_TRUE(std::is_sorted(final.wordStarts.begin(), final.wordStarts.end()));
    EXPECT_GE(final.wordStarts.front(), final.start);
    EXPECT_LE(final.wordStarts.back(), final.start + final.duration);
    EXPECT_NEAR(messages.back().duration, length, 0.001);
}

class StreamAtRate : public Stream, public testing::WithParamInterface<int> {};

TEST_P(StreamAtRate, UnderstandsSpeech) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(GetParam()));
    client.sendAudio(speech("the meeting starts at ten in the morning", GetParam(), 0.3, 1));
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "The meeting starts at ten in the morning.");
}

INSTANTIATE_TEST_SUITE_P(Rates, StreamAtRate, testing::Values(16000, 44100, 48000, 96000, 192000),
                         testing::PrintToStringParamName());

TEST_F(Stream, UnderstandsTelephoneSpeech) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(8000));
    client.sendAudio(speech("good morning everyone and welcome to the meeting", 8000, 0.3, 1));
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "Good morning everyone and welcome to the meeting.");
}

TEST_F(Stream, PutsSamplesTogetherThatMessagesCut) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendAudio(speech("thank you for your letter", 16000, 0.3, 1), 333);
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "Thank you for your letter.");
}

TEST_F(Stream, GoesOnAfterMessagesThatMeanNothing) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendText("{\"type\":");
    client.sendText("[]");
    client.sendText(R"({"type":"Unheard"})");
    client.sendAudio(Audio(1), 1);
    client.sendAudio(Audio(1), 1);
    client.sendAudio(speech("hello world", 16000, 0.3, 1));
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "Hello world.");
    EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::normal);
}

TEST_F(Stream, SettlesTheUtteranceWhenAskedAndGoesOn) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendAudio(speech("this is the first sentence", 16000, 0.3, 0));
    client.sendText(R"({"type":"Finalize"})");
    std::optional<Message> message = client.receive();
    while (message && !message->isFinal) {
        message = client.receive();
    }
    ASSERT_TRUE(message);
    EXPECT_EQ(message->transcript, "This is the first sentence.");
    EXPECT_TRUE(message->isFromFinalize);
    client.sendAudio(speech("this is the second sentence", 16000, 0.5, 1));
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "This is the second sentence.");
}

TEST_F(Stream, IgnoresAudioAfterTheClosing) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendText(closeStream);
    client.sendAudio(silence(16000, 0.5));
    const std::vector<Message> messages = client.receiveAll();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].type, "Metadata");
    EXPECT_EQ(messages[0].duration, 0);
}

TEST_F(Stream, SaysNothingAboutSilence) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(48000));
    client.sendAudio(silence(48000, 30));
    client.sendText(closeStream);
    EXPECT_EQ(client.receiveAll().size(), 1U);
}

TEST_F(Stream, TakesMoreAudioAtOnceThanItLetsWait) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    Audio audio = silence(16000, 60);
    const Audio spoken = speech("hello world", 16000, 0.5, 1);
    audio.insert(audio.end(), spoken.begin(), spoken.end());
    client.sendAudio(audio, 100000);
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "Hello world.");
}

TEST_F(Stream, CutsSpeechThatDoesNotPause) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    // The voice pauses at punctuation only.
    std::string text = "good morning everyone";
    for (int i = 0; i < 20; ++i) {
        text += " and welcome to the meeting";
    }
    client.sendAudio(speech(text, 16000, 0.3, 1));
    client.sendText(closeStream);
    std::vector<Message> finals = client.receiveAll();
    std::erase_if(finals, [](const Message& message) { return !message.isFinal; });
    ASSERT_GE(finals.size(), 2U);
    EXPECT_FALSE(finals[0].isSpeechFinal);
    EXPECT_TRUE(finals.back().isSpeechFinal);
    for (const Message& final : finals) {
        EXPECT_LE(final.duration, 14.1);
        EXPECT_NE(final.transcript, "");
    }
}

TEST_F(Stream, ServesSeveralAtOnce) {
    const std::vector<std::string> sentences{"the weather is nice today",
                                             "the words appear in the editor"};
    std::vector<std::string> understood(sentences.size());
    std::barrier everybodyIsUnderstood(static_cast<std::ptrdiff_t>(sentences.size()));
    std::vector<std::thread> speakers;
    for (std::size_t i = 0; i < sentences.size(); ++i) {
        speakers.emplace_back([&, i] {
            ListenClient client(server_.port(), server_.authority());
            EXPECT_TRUE(client.openAt(16000));
            client.sendAudio(speech(sentences[i], 16000, 0.3, 1));
            std::vector<Message> messages{client.receive().value()};
            // A service that served one client after another would leave one client waiting here.
            everybodyIsUnderstood.arrive_and_wait();
            client.sendText(closeStream);
            const std::vector<Message> rest = client.receiveAll();
            messages.insert(messages.end(), rest.begin(), rest.end());
            understood[i] = finalText(messages);
        });
    }
    for (std::thread& speaker : speakers) {
        speaker.join();
    }
    EXPECT_EQ(understood[0], "The weather is nice today.");
    EXPECT_EQ(understood[1], "The words appear in the editor.");
}

TEST_F(Stream, ServesTheNextClientAfterOneThatVanished) {
    {
        ListenClient client(server_.port(), server_.authority());
        ASSERT_TRUE(client.openAt(16000));
        client.sendAudio(speech("hold on", 16000, 0.3, 0));
    }
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    client.sendAudio(speech("dear sir or madam", 16000, 0.3, 1));
    client.sendText(closeStream);
    EXPECT_EQ(finalText(client.receiveAll()), "Dear sir or madam.");
}

TEST_F(Stream, IsClosedWith1001WhenTheServiceEnds) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    server_.stop();
    EXPECT_TRUE(client.receiveAll().empty());
    EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::going_away);
    server_.join();
}

TEST_F(Stream, DoesNotKeepTheServiceFromEndingWhenItsClientIsDeaf) {
    ListenClient client(server_.port(), server_.authority());
    ASSERT_TRUE(client.openAt(16000));
    server_.stop();
    server_.join();
}

TEST(ServerOptions, HaveTheTimeoutsOfTheHostedService) {
    EXPECT_EQ(ServerOptions().idleTimeout, Seconds(10));
    EXPECT_EQ(ServerOptions().audioTimeout, Seconds(60));
    EXPECT_EQ(ServerOptions().closeDeadline, Seconds(1.5));
}

TEST(IdleStream, IsAnsweredAndClosedWith1011) {
    constexpr std::chrono::milliseconds idleTimeout{600};
    RunningServer server(closingAfter(idleTimeout));
    const Audio spoken = speech("thank you for your letter", 16000, 0.3, 0);
    ListenClient client(server.port(), server.authority());
    ASSERT_TRUE(client.openAt(16000));
    const auto beforeAudio = std::chrono::steady_clock::now();
    client.sendAudio(spoken);
    EXPECT_EQ(finalText(client.receiveAll()), "Thank you for your letter.");
    EXPECT_GE(std::chrono::steady_clock::now() - beforeAudio, idleTimeout);
    EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::internal_error);
    EXPECT_TRUE(client.closeReason().reason.starts_with("NET-0001"));
}

TEST(IdleStream, IsClosedWithoutAudioHoweverOftenTheClientSaysThatItLives) {
    ServerOptions options;
    options.audioTimeout = Seconds(1);
    RunningServer server(options);
    ListenClient client(server.port(), server.authority());
    ASSERT_TRUE(client.openAt(16000));
    const auto beforeAudio = std::chrono::steady_clock::now();
    client.sendAudio(silence(16000, 0.02));
    for (int time = 0; time < 8; ++time) {
        client.sendText(R"({"type":"KeepAlive"})");
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_EQ(client.receiveAll().size(), 1U);
    const Seconds duration = std::chrono::steady_clock::now() - beforeAudio;
    EXPECT_GE(duration, options.audioTimeout);
    EXPECT_LT(duration, options.idleTimeout);
    EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::internal_error);
    EXPECT_EQ(client.closeReason().reason, "NET-0001: no audio came in time");
}

class SparseStream : public testing::Test {
  protected:
    /// Calls `work` ten times within 1.5 idle timeouts, and then ends the stream.
    void expectItStaysOpenWith(const std::function<void(ListenClient&)>& work) {
        ListenClient client(server_.port(), server_.authority());
        ASSERT_TRUE(client.openAt(16000));
        auto next = std::chrono::steady_clock::now();
        for (int time = 0; time < 10; ++time) {
            work(client);
            next += idleTimeout * 15 / 100;
            std::this_thread::sleep_until(next);
        }
        client.sendText(closeStream);
        EXPECT_EQ(client.receiveAll().size(), 1U);
        EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::normal);
    }

  private:
    // Long enough for a test process that stands still for a second.
    static constexpr std::chrono::milliseconds idleTimeout{2000};
    RunningServer server_{closingAfter(idleTimeout)};
};

TEST_F(SparseStream, IsKeptOpenByKeepAliveMessages) {
    expectItStaysOpenWith([](ListenClient& client) { client.sendText(R"({"type":"KeepAlive"})"); });
}

TEST_F(SparseStream, IsKeptOpenByAudio) {
    expectItStaysOpenWith([](ListenClient& client) { client.sendAudio(silence(16000, 0.02)); });
}

}  // namespace

}  // namespace tarvik::service
