// SPDX-License-Identifier: MIT

#include "speech-service/EngineChoice.h"

#include "speech-service/PocketSphinxEngine.h"
#ifdef TARVIK_WHISPER
#include "speech-service/WhisperEngine.h"
#endif

namespace tarvik::service {

namespace {

struct EngineChoice {
    std::string_view name;
    Result<std::unique_ptr<Engine>> (*create)(const std::filesystem::path& model);
};

constexpr EngineChoice engines[] = {
    {defaultEngine, &PocketSphinxEngine::create},
#ifdef TARVIK_WHISPER
    {"whisper", &WhisperEngine::create},
#endif
};

}  // namespace

std::string engineNames() {
    std::string names;
    for (const EngineChoice& engine : engines) {
        names += (names.empty() ? "" : ", ") + std::string(engine.name);
    }
    return names;
}

Result<std::unique_ptr<Engine>> createEngine(std::string_view name,
                                             const std::filesystem::path& model) {
    for (const EngineChoice& engine : engines) {
        if (engine.name == name) {
            return engine.create(model);
        }
    }
    return Error{2, "There is no engine \"" + std::string(name) + "\" in this build; it has " +
                        engineNames()};
}

}  // namespace tarvik::service
