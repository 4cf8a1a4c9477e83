// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "speech-service/Decoder.h"

struct whisper_context;
struct whisper_state;

namespace tarvik::service {

/// The decoder of whisper.cpp. A pass decodes the whole utterance, so process() only collects the
/// sound. Interim passes take place as long as they are quick; the last pass follows the end.
class WhisperDecoder : public Decoder {
  public:
    /// `context` must outlive the decoder, which owns `state`.
    WhisperDecoder(whisper_context* context, whisper_state* state);
    ~WhisperDecoder() override;

    void startStream() override;
    void startUtterance() override;
    void process(std::span<const std::int16_t> samples) override;
    void refresh() override;
    Hypothesis hypothesis() const override { return hypothesis_; }
    std::vector<Word> endUtterance() override;
    void abort() override { isAborted_ = true; }

  private:
    using Clock = std::chrono::steady_clock;

    struct Deleter {
        void operator()(whisper_state* state) const;
    };

    static bool mustStop(void* decoder);
    /// Decodes the utterance so far. False if an abort or the deadline has stopped the pass.
    bool decode(Clock::time_point deadline);
    std::vector<Word> wordsOfState() const;

    whisper_context* const context_;
    std::unique_ptr<whisper_state, Deleter> state_;
    std::vector<float> sound_;
    Hypothesis hypothesis_;
    bool hasQuickPasses_ = true;
    Clock::time_point deadline_;
    std::atomic<bool> isAborted_ = false;
};

}  // namespace tarvik::service
