// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "base/Result.h"
#include "speech-service/Decoder.h"

namespace tarvik::service {

/// What an engine is and what its streams need.
struct EngineInfo {
    /// The model's name and version, and the kind of the engine, for the messages to clients.
    std::string name;
    std::string version;
    std::string architecture;
    /// A UUID that identifies the model in messages.
    std::string modelId;
    /// The memory of one decoder in bytes.
    std::size_t decoderMemory = 0;
    /// The number of streams that one processor core decodes as fast as people speak.
    double streamsPerCore = 1;
};

/// A speech recogniser with its model. Any thread.
class Engine {
  public:
    virtual ~Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    virtual const EngineInfo& info() const = 0;

    /// A decoder for one stream, which must not outlive the engine. Blocks while the decoder loads.
    /// The error's text is for the person who runs the service.
    virtual Result<std::unique_ptr<Decoder>> createDecoder() = 0;

  protected:
    Engine() = default;
};

}  // namespace tarvik::service
