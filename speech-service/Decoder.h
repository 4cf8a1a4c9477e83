// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Time.h"
#include "speech-service/Word.h"

namespace tarvik::service {

/// What a decoder makes of an utterance before the utterance's end.
struct Hypothesis {
    /// Times count from the start of the utterance. Confidences are 0.
    std::vector<Word> words;
    /// The words come from this much of the utterance's audio.
    Seconds covered{};
};

/// Turns the speech of one stream into words, one utterance at a time.
///
/// One thread at a time, except abort(). Each startUtterance() needs an endUtterance() before the
/// next startUtterance(). No operation fails: a decoder that understands nothing has no words.
class Decoder {
  public:
    virtual ~Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Forgets the voice and the room of the previous stream, and an earlier abort().
    virtual void startStream() = 0;

    virtual void startUtterance() = 0;

    /// Takes audio at recognitionRate.
    virtual void process(std::span<const std::int16_t> samples) = 0;

    /// Computes a new hypothesis if that is quick enough for interim results. A decoder that
    /// decodes inside process() has nothing to do here.
    virtual void refresh() {}

    /// The newest hypothesis. Computes next to nothing.
    virtual Hypothesis hypothesis() const = 0;

    /// The final words of the utterance. Times count from the utterance's start. Blocks for a
    /// fraction of the utterance's length.
    virtual std::vector<Word> endUtterance() = 0;

    /// Makes a running and every later operation return early, with the words known by then, as far
    /// as the engine can. Holds until startStream(). Any thread.
    virtual void abort() {}

  protected:
    Decoder() = default;
};

}  // namespace tarvik::service
