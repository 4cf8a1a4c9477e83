// SPDX-License-Identifier: MIT

#include "audio/AudioCapture.h"

#include <utility>

namespace tarvik {

AudioCapture::AudioCapture(platform::AudioService& service, platform::Log& log)
    : engine_(service.makeEngine()),
      currentOnPCM_(std::make_shared<AtomicReference<const ChunkCallback>>()),
      service_(service),
      log_(log),
      configurationObservation_(
          service.observeConfigurationChange([this] { handleConfigurationChange(); })) {}

void AudioCapture::start(ChunkCallback onPcm) {
    if (isRunning_) {
        return;
    }
    currentOnPCM_->store(onPcm ? std::make_shared<const ChunkCallback>(std::move(onPcm)) : nullptr);
    attachAndStart();
}

void AudioCapture::attachAndStart() {
    platform::AudioInputNode& input = engine_->inputNode();
    const platform::AudioFormat format = input.inputFormatForBus(inputBus);
    if (!(format.sampleRate > 0)) {
        log_.write("AudioCapture: input has no format (mic permission missing or no device?)");
        return;
    }
    input.installTapOnBus(
        inputBus, tapBufferSize, format,
        [weakCallback = std::weak_ptr(currentOnPCM_)](const platform::AudioPcmBuffer& buffer) {
            const auto cell = weakCallback.lock();
            const auto callback = cell ? cell->load() : nullptr;
            if (!callback) {
                return;
            }
            if (std::optional<PcmChunk> chunk = float32ToInt16LE(buffer)) {
                (*callback)(std::move(*chunk));
            }
        });
    engine_->prepare();
    if (const std::optional<Error> error = engine_->start()) {
        log_.write("AudioCapture: engine.start failed — " + error->localizedDescription);
        input.removeTapOnBus(inputBus);
        return;
    }
    isRunning_ = true;
}

void AudioCapture::detach() {
    engine_->inputNode().removeTapOnBus(inputBus);
    engine_->stop();
}

void AudioCapture::stop() {
    if (!isRunning_) {
        return;
    }
    detach();
    isRunning_ = false;
    currentOnPCM_->store(nullptr);
}

void AudioCapture::handleConfigurationChange() {
    log_.write("TarvikDictate: audio configuration changed — rebuilding engine");
    if (!isRunning_ || !currentOnPCM_->load()) {
        return;
    }
    detach();
    engine_ = service_.makeEngine();
    // A failed restart leaves isRunning_ set. The recording goes on without audio until stop() or
    // until the next configuration change starts the engine again.
    attachAndStart();
}

}  // namespace tarvik
