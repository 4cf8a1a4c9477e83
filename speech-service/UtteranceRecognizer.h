// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "speech-service/Decoder.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// Splits one stream of audio into utterances and decodes them during the speech.
///
/// One thread at a time. The handler is called on that thread, inside process() and finish().
class UtteranceRecognizer {
  public:
    using UtteranceHandler = std::function<void(const Utterance&)>;

    /// `decoder` must outlive the recognizer and is ready for another stream after it.
    UtteranceRecognizer(Decoder& decoder, bool interimResults, UtteranceHandler onUtterance);
    ~UtteranceRecognizer();
    UtteranceRecognizer(const UtteranceRecognizer&) = delete;
    UtteranceRecognizer& operator=(const UtteranceRecognizer&) = delete;

    /// Decodes audio at recognitionRate. Reports a final utterance after each pause of 0.5 s; long
    /// speech is cut at a shorter pause or at 18 s. Reports changed interim words every 0.5 s.
    void process(std::span<const std::int16_t> samples);

    /// Reports the speech since the last final utterance, if any, as a final utterance. More audio
    /// may follow.
    void finish();

  private:
    enum class EndReason { pause, cut, request };

    void processChunk(std::span<const std::int16_t> chunk);
    void startSpeech();
    void reportInterim();
    void endSpeech(EndReason reason);
    void addWords(Utterance& utterance) const;

    Decoder& decoder_;
    bool interimResults_;
    UtteranceHandler onUtterance_;
    /// The length of the audio so far.
    Seconds position_{};
    Seconds lastEnd_{};
    Seconds speechStart_{};
    Seconds lastCheck_{};
    bool isInSpeech_ = false;
    bool isContinuation_ = false;
    std::vector<std::string> lastInterim_;
};

}  // namespace tarvik::service
