// SPDX-License-Identifier: MIT

#include "tests/speech-service/ScriptedEngine.h"

#include <sys/resource.h>

#include <limits>
#include <sstream>

#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

constexpr Seconds unlimited{std::numeric_limits<double>::infinity()};

std::vector<Word> wordsOf(const std::string& text, double confidence) {
    constexpr Seconds length{0.3};
    std::vector<Word> words;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        const Seconds start = length * static_cast<double>(words.size());
        words.push_back({word, start, start + length, confidence});
    }
    return words;
}

}  // namespace

class ScriptedDecoder : public Decoder {
  public:
    explicit ScriptedDecoder(ScriptedEngine& engine) : engine_(engine) { ++engine_.alive_; }
    ~ScriptedDecoder() override { --engine_.alive_; }

    void startStream() override { isAborted_ = false; }
    void startUtterance() override { length_ = {}; }

    void process(std::span<const std::int16_t> samples) override {
        length_ += Seconds(static_cast<double>(samples.size()) / recognitionRate);
        std::unique_lock lock(engine_.mutex_);
        engine_.changed_.wait(lock,
                              [this] { return isAborted_ || length_ <= engine_.decodingLimit_; });
    }

    Hypothesis hypothesis() const override {
        const std::lock_guard lock(engine_.mutex_);
        return {wordsOf(engine_.hypothesis_, 0), length_};
    }

    std::vector<Word> endUtterance() override {
        std::unique_lock lock(engine_.mutex_);
        engine_.isSettling_ = true;
        engine_.changed_.notify_all();
        engine_.changed_.wait(lock, [this] {
            return (isAborted_ && engine_.canAbort_) || !engine_.isSettlingBlocked_;
        });
        engine_.isSettling_ = false;
        engine_.lengths_.push_back(length_);
        engine_.priority_ = getpriority(PRIO_PROCESS, 0);
        return wordsOf(engine_.words_, 1);
    }

    void abort() override {
        isAborted_ = true;
        const std::lock_guard lock(engine_.mutex_);
        engine_.changed_.notify_all();
    }

  private:
    ScriptedEngine& engine_;
    Seconds length_{};
    std::atomic<bool> isAborted_ = false;
};

ScriptedEngine::ScriptedEngine()
    : info_{"script", "1", "test", "00000000-0000-4000-8000-000000000000", 1, 100},
      decodingLimit_(unlimited) {}

Result<std::unique_ptr<Decoder>> ScriptedEngine::createDecoder() {
    if (failsLoading_) {
        return Error{1, "The script has no model"};
    }
    ++loaded_;
    return std::unique_ptr<Decoder>(std::make_unique<ScriptedDecoder>(*this));
}

void ScriptedEngine::understand(const std::string& hypothesis, const std::string& words) {
    const std::lock_guard lock(mutex_);
    hypothesis_ = hypothesis;
    words_ = words;
}

void ScriptedEngine::blockSettling() {
    const std::lock_guard lock(mutex_);
    isSettlingBlocked_ = true;
}

void ScriptedEngine::blockDecodingAfter(Seconds audio) {
    const std::lock_guard lock(mutex_);
    decodingLimit_ = audio;
    changed_.notify_all();
}

void ScriptedEngine::letSettle() {
    const std::lock_guard lock(mutex_);
    isSettlingBlocked_ = false;
    decodingLimit_ = unlimited;
    changed_.notify_all();
}

void ScriptedEngine::awaitSettling() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isSettling_; });
}

std::vector<Seconds> ScriptedEngine::lengths() const {
    const std::lock_guard lock(mutex_);
    return lengths_;
}

}  // namespace tarvik::service
