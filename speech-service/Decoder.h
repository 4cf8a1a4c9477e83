// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/Result.h"
#include "base/Time.h"
#include "speech-service/Word.h"

namespace tarvik::service {

class PocketSphinx;

/// The speech recognizer with its models. It decodes one utterance of one stream at a time.
///
/// One thread at a time. Each startUtterance() needs an endUtterance() before the next one.
class Decoder {
  public:
    /// The audio before the detection of speech that belongs to the utterance all the same.
    static constexpr Seconds preSpeech{0.2};

    ~Decoder();
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Loads the models. Blocks for some tenths of a second; a decoder takes about 100 MiB.
    static Result<std::unique_ptr<Decoder>> load();

    /// Resets the adaptation to the voice and the room of the previous stream.
    void startStream();

    void startUtterance();

    /// Decodes audio at recognitionRate. Silence takes almost no processor time.
    void process(std::span<const std::int16_t> samples);

    /// Whether the last samples were speech. Speech ends after 0.5 s of silence.
    bool isInSpeech() const;

    /// The words of the utterance so far. Times count from the start of the speech. Confidences are
    /// 0 before endUtterance().
    std::vector<Word> words() const;

    /// The length of the pause after the last word; zero during a word.
    Seconds trailingPause() const;

    /// Computes the final words. Blocks for up to a tenth of the utterance's length.
    void endUtterance();

  private:
    explicit Decoder(std::unique_ptr<PocketSphinx> library);

    std::unique_ptr<PocketSphinx> library_;
    bool isEnded_ = false;
};

}  // namespace tarvik::service
