// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>

#include "speech-service/Engine.h"

namespace tarvik::service {

/// PocketSphinx. Every decoder loads the model for itself, because decoders cannot share one.
class PocketSphinxEngine : public Engine {
  public:
    /// `model` is a folder with en-us/, en-us.lm.bin and cmudict-en-us.dict. Without a folder the
    /// engine takes the model that the build found. An error if a file is missing.
    static Result<std::unique_ptr<Engine>> create(const std::filesystem::path& model);

    const EngineInfo& info() const override { return info_; }
    Result<std::unique_ptr<Decoder>> createDecoder() override;

  private:
    explicit PocketSphinxEngine(std::filesystem::path model);

    const std::filesystem::path model_;
    const EngineInfo info_;
};

}  // namespace tarvik::service
