// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

struct ps_decoder_s;

namespace tarvik::service {

/// The files of a speech model.
struct SpeechModel {
    std::string acoustics;
    std::string language;
    std::string dictionary;
};

/// The library's decoder, with what differs between the releases of the library: the settings, the
/// reset of a stream, and the detection of speech. Each release has an implementation of its own.
///
/// One thread at a time.
class PocketSphinx {
  public:
    /// The language weight of the later passes, from trials with dictated sentences.
    static constexpr double laterPassesWeight = 7.5;

    virtual ~PocketSphinx() = default;

    /// Loads `model`. Null when the library refuses the model.
    static std::unique_ptr<PocketSphinx> load(const SpeechModel& model);

    /// The decoder, for the library's functions that all releases have. Lives as long as this
    /// object.
    virtual ps_decoder_s* decoder() const = 0;

    /// Resets the adaptation to the voice and the room. Only between utterances.
    virtual void startStream() = 0;

    /// Speech has to begin anew, also when the last samples were speech.
    virtual void startUtterance() = 0;

    /// Decodes the speech in audio at recognitionRate, from 0.2 s before the detection on.
    virtual void process(std::span<const std::int16_t> samples) = 0;

    /// Whether the last samples were speech. Speech begins after 0.1 s of voice and ends after 0.5
    /// s without voice.
    virtual bool isInSpeech() const = 0;

    virtual void endUtterance() = 0;
};

}  // namespace tarvik::service
