// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

struct ps_decoder_s;

namespace tarvik::service {

/// The files of a speech model.
struct SpeechModel {
    std::string acoustics;
    std::string language;
    std::string dictionary;
};

/// The library's decoder, with what differs between the releases of the library: the settings and
/// the reset of a stream. Each release has an implementation of its own.
///
/// One thread at a time.
class PocketSphinx {
  public:
    /// The language weight of the later passes, from trials with dictated sentences.
    static constexpr double laterPassesWeight = 7.5;

    virtual ~PocketSphinx() = default;

    /// Loads `model`. Null when the library refuses the model.
    static std::unique_ptr<PocketSphinx> load(const SpeechModel& model);

    /// The decoder, for the library's functions that all releases have. It decodes silence, too.
    /// Lives as long as this object.
    virtual ps_decoder_s* decoder() const = 0;

    /// Resets the adaptation to the voice and the room. Only between utterances.
    virtual void startStream() = 0;
};

}  // namespace tarvik::service
