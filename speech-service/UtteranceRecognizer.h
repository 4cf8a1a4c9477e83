#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "speech-service/Decoder.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// Finds the utterances in one stream of audio and has them decoded while they are spoken.
///
/// Any one thread at a time; the receiver is called on it, inside process and finish.
class UtteranceRecognizer {
  public:
    using Receiver = std::function<void(const Utterance&)>;

    /// `decoder` must outlive the recognizer, which leaves it ready for another stream.
    UtteranceRecognizer(Decoder& decoder, bool interimResults, Receiver receiver);
    ~UtteranceRecognizer();
    UtteranceRecognizer(const UtteranceRecognizer&) = delete;
    UtteranceRecognizer& operator=(const UtteranceRecognizer&) = delete;

    /// Listens to audio at recognitionRate. Yields a final utterance after each pause of half a
    /// second, in long speech at a shorter pause too, and interim ones every half second between.
    void process(std::span<const std::int16_t> samples);

    /// Yields what was spoken since the last final utterance, as a final one; if nothing was,
    /// nothing. More audio may follow.
    void finish();

  private:
    enum class Ending { pause, cut, request };

    void processPiece(std::span<const std::int16_t> piece);
    void startSpeech();
    void reportInterim();
    void endSpeech(Ending ending);
    void addWords(Utterance& utterance) const;

    Decoder& decoder_;
    bool interimResults_;
    Receiver receiver_;
    /// Audio heard so far.
    Seconds position_{};
    Seconds lastEnd_{};
    Seconds speechStart_{};
    Seconds lastLook_{};
    bool isInSpeech_ = false;
    bool isContinuation_ = false;
    std::vector<std::string> lastInterim_;
};

}  // namespace tarvik::service
