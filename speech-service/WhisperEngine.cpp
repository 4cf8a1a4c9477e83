// SPDX-License-Identifier: MIT

#include "speech-service/WhisperEngine.h"

#include <ggml-backend.h>
#include <whisper.h>

#include <cerrno>
#include <cstdio>
#include <mutex>
#include <system_error>

#include "speech-service/WhisperDecoder.h"

namespace tarvik::service {

namespace {

void printErrors(ggml_log_level level, const char* text, void*) {
    if (level == GGML_LOG_LEVEL_ERROR) {
        std::fputs(text, stderr);
    }
}

}  // namespace

void WhisperEngine::Deleter::operator()(whisper_context* context) const {
    whisper_free(context);
}

WhisperEngine::WhisperEngine(whisper_context* context, EngineInfo info)
    : context_(context), info_(std::move(info)) {}

Result<std::unique_ptr<Engine>> WhisperEngine::create(const std::filesystem::path& model) {
    if (model.empty()) {
        return Error{EINVAL, "The engine \"whisper\" needs --model with a model file"};
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(model, error)) {
        return Error{ENOENT, "There is no speech model in " + model.string()};
    }
    static std::once_flag isReportingSet;
    std::call_once(isReportingSet, [] {
        whisper_log_set(printErrors, nullptr);
        // The code for each kind of processor is in a file of its own.
        ggml_backend_load_all();
    });
    // The library ends the process otherwise.
    if (!ggml_backend_dev_by_type(GGML_BACKEND_DEVICE_TYPE_CPU)) {
        return Error{ENODEV, "The library of whisper.cpp has no code for this processor"};
    }
    whisper_context_params parameters = whisper_context_default_params();
    whisper_context* context =
        whisper_init_from_file_with_params_no_state(model.c_str(), parameters);
    if (!context) {
        return Error{0, "The speech model in " + model.string() + " could not be loaded"};
    }
    EngineInfo info;
    info.name = model.stem().string();
    info.version = whisper_version();
    info.architecture = "whisper";
    // A random id; the model's name tells models apart.
    info.modelId = "b0a6d0de-3c5f-4a53-9a0e-6f6f3f0c2d1b";
    // The buffers and the cache of a state of the size "base".
    info.decoderMemory = std::size_t{200} * 1024 * 1024;
    info.streamsPerCore = 0.5;
    return std::unique_ptr<Engine>(new WhisperEngine(context, std::move(info)));
}

Result<std::unique_ptr<Decoder>> WhisperEngine::createDecoder() {
    whisper_state* state = whisper_init_state(context_.get());
    if (!state) {
        return Error{ENOMEM, "There is no memory for another decoder"};
    }
    return std::unique_ptr<Decoder>(std::make_unique<WhisperDecoder>(context_.get(), state));
}

}  // namespace tarvik::service
