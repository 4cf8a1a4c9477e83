#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/Result.h"
#include "base/Time.h"
#include "speech-service/Word.h"

struct ps_decoder_s;

namespace tarvik::service {

/// The speech recognizer itself, with its models: one utterance at a time, of one stream at a time.
///
/// Any one thread at a time. An utterance that was started must be ended before the next starts.
class Decoder {
  public:
    /// Speech that came before the decoder noticed it and that it decodes all the same.
    static constexpr Seconds lookBehind{0.2};

    /// Loads the models, which takes some tenths of a second and about 100 MiB.
    static Result<std::unique_ptr<Decoder>> load();

    /// Forgets the voice and the room of the stream before.
    void startStream();

    void startUtterance();

    /// Listens to audio at recognitionRate. Silence costs next to nothing.
    void process(std::span<const std::int16_t> samples);

    /// Whether somebody speaks, as of the last samples; half a second of silence ends it.
    bool hearsSpeech() const;

    /// What was said so far, with times that count from the beginning of the speech. Confidences
    /// are known only after endUtterance and 0 before.
    std::vector<Word> words() const;

    /// The length of the pause after the last of the words so far, zero while one is being spoken.
    Seconds trailingPause() const;

    /// Settles the utterance; takes up to a tenth of its length.
    void endUtterance();

  private:
    struct Deleter {
        void operator()(ps_decoder_s* decoder) const;
    };

    explicit Decoder(ps_decoder_s* decoder);

    std::unique_ptr<ps_decoder_s, Deleter> decoder_;
    std::vector<float> initialMeans_;
    bool isEnded_ = false;
};

}  // namespace tarvik::service
