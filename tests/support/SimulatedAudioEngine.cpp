// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedAudioEngine.h"

#include <utility>

namespace tarvik::simulated {

std::vector<std::string> SimulatedAudioEngineRecord::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

platform::AudioTapBlock SimulatedAudioEngineRecord::tap() const {
    const std::lock_guard lock(tapMutex_);
    return tap_;
}

bool SimulatedAudioEngineRecord::deliver(const platform::AudioPcmBuffer& buffer) {
    const std::lock_guard lock(tapMutex_);
    if (!isRunning_ || !tap_) {
        return false;
    }
    tap_(buffer);
    return true;
}

void SimulatedAudioEngineRecord::addCall(std::string call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
}

void SimulatedAudioEngineRecord::setTap(platform::AudioTapBlock block) {
    const std::lock_guard lock(tapMutex_);
    tap_ = std::move(block);
}

SimulatedAudioEngine::SimulatedAudioEngine(Context context,
                                           std::shared_ptr<SimulatedAudioEngineRecord> record)
    : context_(std::move(context)), record_(std::move(record)) {}

SimulatedAudioEngine::~SimulatedAudioEngine() {
    record_->isRunning_ = false;
    record_->setTap(nullptr);
    record_->isAlive_ = false;
}

void SimulatedAudioEngine::recordCall(const std::string& call) {
    record_->addCall(call);
    context_.onCall(call);
}

void SimulatedAudioEngine::prepare() {
    recordCall("prepare");
}

std::optional<Error> SimulatedAudioEngine::start() {
    recordCall("start");
    std::optional<Error> failure = context_.startFailure();
    record_->isRunning_ = !failure.has_value();
    return failure;
}

void SimulatedAudioEngine::stop() {
    recordCall("stop");
    record_->isRunning_ = false;
}

platform::AudioFormat SimulatedAudioEngine::inputFormatForBus(std::uint32_t bus) {
    recordCall("inputFormat " + std::to_string(bus));
    return context_.inputFormat();
}

void SimulatedAudioEngine::installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                           const platform::AudioFormat& format,
                                           platform::AudioTapBlock block) {
    recordCall("installTap " + std::to_string(bus) + " " + std::to_string(bufferSize) + " " +
               std::to_string(static_cast<long>(format.sampleRate)));
    record_->setTap(std::move(block));
}

void SimulatedAudioEngine::removeTapOnBus(std::uint32_t bus) {
    recordCall("removeTap " + std::to_string(bus));
    record_->setTap(nullptr);
}

}  // namespace tarvik::simulated
