// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>

#include "speech-service/Engine.h"

struct whisper_context;

namespace tarvik::service {

/// whisper.cpp. All decoders share one model, and each has a state of its own.
class WhisperEngine : public Engine {
  public:
    /// Loads the model file at `model`, in the ggml format. An error without a path and for a file
    /// that is no model.
    static Result<std::unique_ptr<Engine>> create(const std::filesystem::path& model);

    const EngineInfo& info() const override { return info_; }
    Result<std::unique_ptr<Decoder>> createDecoder() override;

  private:
    struct Deleter {
        void operator()(whisper_context* context) const;
    };

    WhisperEngine(whisper_context* context, EngineInfo info);

    std::unique_ptr<whisper_context, Deleter> context_;
    const EngineInfo info_;
};

}  // namespace tarvik::service
