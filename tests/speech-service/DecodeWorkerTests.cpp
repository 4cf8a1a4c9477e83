// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <thread>

#include "speech-service/DecodeWorker.h"
#include "tests/speech-service/ScriptedEngine.h"
#include "tests/speech-service/SyntheticSound.h"

namespace tarvik::service {

namespace {

using namespace std::chrono_literals;

class Worker : public testing::Test {
  protected:
    Worker() { engine_->understand("so far", "all of it"); }

    void start(Seconds endDeadline = Seconds(0.2)) {
        DecodeWorker::Options options;
        options.sampleRate = 16000;
        options.endDeadline = endDeadline;
        DecodeWorker::Callbacks callbacks;
        callbacks.onUtterance = [this](const Utterance& utterance) {
            std::string text;
            for (const Word& word : utterance.words) {
                text += (text.empty() ? "" : " ") + word.text;
            }
            reports_.push_back(text + (utterance.isSentenceEnd ? "." : ""));
        };
        callbacks.onDrained = [this] { hasDrained_ = true; };
        callbacks.onEnd = [this](const std::optional<Error>& error) {
            ++ends_;
            error_ = error;
        };
        worker_ =
            DecodeWorker::start(context_.get_executor(), pool_, options, std::move(callbacks));
    }

    void append(const Sound& sound) {
        std::vector<std::uint8_t> bytes;
        for (const std::int16_t sample : sound) {
            bytes.push_back(static_cast<std::uint8_t>(sample & 0xFF));
            bytes.push_back(static_cast<std::uint8_t>(sample >> 8 & 0xFF));
        }
        worker_->append(std::move(bytes));
    }

    /// Appends `sound` when a live microphone would have it.
    void appendLive(const Sound& sound) {
        std::this_thread::sleep_until(began_ + std::chrono::milliseconds(sound.size() / 16));
        append(sound);
    }

    void runUntilEnd() {
        while (ends_ == 0) {
            ASSERT_NE(context_.run_one_for(20s), 0U);
        }
    }

    const std::shared_ptr<ScriptedEngine> engine_ = std::make_shared<ScriptedEngine>();
    const std::shared_ptr<DecoderPool> pool_ = DecoderPool::create(engine_);
    const std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
    boost::asio::io_context context_;
    std::vector<std::string> reports_;
    bool hasDrained_ = false;
    int ends_ = 0;
    std::optional<Error> error_;
    std::shared_ptr<DecodeWorker> worker_;
};

TEST_F(Worker, ReportsTheSettledWords) {
    start(Seconds(20));
    appendLive(quiet(0.3) + voice(0.5));
    worker_->end();
    runUntilEnd();
    EXPECT_EQ(reports_, std::vector<std::string>{"all of it."});
    EXPECT_FALSE(error_);
    context_.run();
}

TEST_F(Worker, ReportsTheFirstPassAtTheDeadlineWhenSettlingIsSlow) {
    engine_->blockSettling();
    start();
    appendLive(quiet(0.3) + voice(0.5));
    const auto end = std::chrono::steady_clock::now();
    worker_->end();
    runUntilEnd();
    EXPECT_EQ(reports_, std::vector<std::string>{"so far."});
    EXPECT_FALSE(error_);
    EXPECT_GE(std::chrono::steady_clock::now() - end, 200ms);
    engine_->letSettle();
    context_.run();
    EXPECT_EQ(reports_.size(), 1U);
}

TEST_F(Worker, SettlesWithTheLowestPriorityAfterTheDeadline) {
    engine_->blockSettling();
    engine_->forbidAbort();
    start();
    appendLive(quiet(0.3) + voice(0.5));
    worker_->end();
    runUntilEnd();
    engine_->letSettle();
    context_.run();
    EXPECT_EQ(engine_->priority(), 19);
}

TEST_F(Worker, ReportsWhatIsKnownAtTheDeadlineAndTheRestLater) {
    // The words last 0.6 s, which is the audio that is decoded at the deadline; three are settled.
    engine_->understand("w0 w1", "w0 w1 w2");
    engine_->blockDecodingAfter(Seconds(0.75));
    // Enough for the decoding up to there on a busy machine.
    start(Seconds(3));
    appendLive(quiet(0.2) + voice(1.2));
    worker_->end();
    while (reports_.empty()) {
        ASSERT_NE(context_.run_one_for(20s), 0U);
    }
    EXPECT_EQ(reports_[0], "w0 w1");
    EXPECT_EQ(ends_, 0);
    engine_->letSettle();
    runUntilEnd();
    EXPECT_EQ(reports_, (std::vector<std::string>{"w0 w1", "w2."}));
    context_.run();
}

TEST_F(Worker, ReportsTheRestWithoutSettlingAfterTheDeadline) {
    engine_->understand("w0 w1", "never");
    engine_->blockSettling();
    engine_->blockDecodingAfter(Seconds(0.75));
    // Enough for the decoding up to there on a busy machine.
    start(Seconds(3));
    appendLive(quiet(0.2) + voice(1.2));
    worker_->end();
    while (reports_.empty()) {
        ASSERT_NE(context_.run_one_for(20s), 0U);
    }
    EXPECT_EQ(reports_, std::vector<std::string>{"w0 w1"});
    engine_->understand("w0 w1 w2 w3", "never");
    engine_->blockDecodingAfter(Seconds(60));
    runUntilEnd();
    EXPECT_EQ(reports_, (std::vector<std::string>{"w0 w1", "w2 w3."}));
    EXPECT_FALSE(error_);
    context_.run();
}

TEST_F(Worker, EndsOnceWhenTheDeadlinePassesRightAfterTheWords) {
    start(Seconds(0.2));
    appendLive(quiet(0.3) + voice(0.5));
    worker_->end();
    // The thread ends and the deadline passes before the executor runs any callback.
    while (pool_->readyCount() == 0) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_until(began_ + 1500ms);
    EXPECT_NO_THROW(context_.run());
    EXPECT_EQ(reports_, std::vector<std::string>{"all of it."});
    EXPECT_EQ(ends_, 1);
}

TEST_F(Worker, WaitsForTheWordsWhenTheFirstPassKnowsNone) {
    engine_->understand("", "all of it");
    engine_->blockSettling();
    start();
    appendLive(quiet(0.3) + voice(0.5));
    worker_->end();
    context_.run_for(500ms);
    EXPECT_EQ(ends_, 0);
    engine_->letSettle();
    runUntilEnd();
    EXPECT_EQ(reports_, std::vector<std::string>{"all of it."});
    context_.run();
}

TEST_F(Worker, HasNoDeadlineForAudioThatCameFasterThanSpeech) {
    engine_->blockSettling();
    start();
    append(quiet(0.3) + voice(5));
    worker_->end();
    context_.run_for(500ms);
    EXPECT_TRUE(reports_.empty());
    engine_->letSettle();
    runUntilEnd();
    EXPECT_EQ(reports_, std::vector<std::string>{"all of it."});
    context_.run();
}

TEST_F(Worker, TellsThatNoDecoderLoads) {
    engine_->failLoading();
    start();
    runUntilEnd();
    ASSERT_TRUE(error_);
    EXPECT_EQ(error_->localizedDescription, "The script has no model");
    context_.run();
}

TEST_F(Worker, ReportsNothingAfterACancel) {
    engine_->blockSettling();
    start(Seconds(20));
    append(quiet(0.3) + voice(1));
    worker_->end();
    worker_->cancel();
    // The blocked settling ends, too: the context would run forever otherwise.
    context_.run();
    EXPECT_TRUE(reports_.empty());
    EXPECT_EQ(ends_, 0);
    EXPECT_EQ(pool_->readyCount(), 1U);
}

TEST_F(Worker, AsksForAPauseWhenAudioPilesUpAndTellsWhenItIsGone) {
    engine_->blockDecodingAfter(Seconds(0));
    start(Seconds(20));
    append(quiet(0.3) + voice(1));
    EXPECT_TRUE(worker_->append(std::vector<std::uint8_t>(std::size_t{20} * 32000)));
    EXPECT_FALSE(worker_->append(std::vector<std::uint8_t>(std::size_t{20} * 32000)));
    engine_->letSettle();
    worker_->end();
    runUntilEnd();
    EXPECT_TRUE(hasDrained_);
    EXPECT_NEAR(worker_->appended().count(), 41.3, 0.01);
    context_.run();
}

}  // namespace

}  // namespace tarvik::service
