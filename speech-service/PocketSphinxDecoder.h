// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "base/Result.h"
#include "speech-service/Decoder.h"

namespace tarvik::service {

class PocketSphinx;

/// The decoder of PocketSphinx, with a model of its own. The first pass keeps up with the audio;
/// two more passes at the end of the utterance take up to a tenth of the utterance's length.
class PocketSphinxDecoder : public Decoder {
  public:
    /// Loads the models in `model`. Blocks for some tenths of a second.
    static Result<std::unique_ptr<Decoder>> load(const std::filesystem::path& model);

    ~PocketSphinxDecoder() override;

    void startStream() override;
    void startUtterance() override;
    void process(std::span<const std::int16_t> samples) override;
    Hypothesis hypothesis() const override;
    std::vector<Word> endUtterance() override;

  private:
    explicit PocketSphinxDecoder(std::unique_ptr<PocketSphinx> library);
    std::vector<Word> words(bool hasConfidence) const;

    std::unique_ptr<PocketSphinx> library_;
    Seconds processed_{};
};

}  // namespace tarvik::service
