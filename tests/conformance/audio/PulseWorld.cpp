// SPDX-License-Identifier: MIT

#include "tests/conformance/audio/PulseWorld.h"

#include <algorithm>

namespace tarvik::tests {

PulseWorld::PulseWorld() {
    server_.start();
    service_ = std::make_unique<linuxdesktop::PulseAudioService>(mainQueue_, log_);
    const bool isKnown = runUntil([this] { return service_->authorizationStatusForAudio() != 0; },
                                  std::chrono::seconds(5));
    EXPECT_TRUE(isKnown) << "the service does not find the server";
}

PulseWorld::~PulseWorld() {
    service_.reset();
    if (testing::Test::HasFailure()) {
        for (const std::string& line : log_.lines()) {
            std::printf("    %s\n", line.c_str());
        }
    }
}

bool PulseWorld::runUntil(const std::function<bool()>& condition,
                          std::chrono::milliseconds timeout) {
    return mainQueue_.runUntil(condition, timeout);
}

std::string PulseWorld::nextMicrophone() {
    return "mic" + std::to_string(++microphoneCount_);
}

std::string PulseWorld::pipeSource(std::uint32_t sampleRate, std::uint32_t channelCount) const {
    return "source_name=" + microphoneName_ +
           " file=" + (server_.folder() / microphoneName_).string() +
           " format=s16le rate=" + std::to_string(sampleRate) +
           " channels=" + std::to_string(channelCount);
}

void PulseWorld::startMicrophone(std::uint32_t sampleRate, std::uint32_t channelCount) {
    microphone_ = std::make_unique<PipeMicrophone>(server_.folder() / microphoneName_, sampleRate,
                                                   channelCount);
}

void PulseWorld::plug(std::uint32_t sampleRate, std::uint32_t channelCount) {
    microphoneName_ = nextMicrophone();
    server_.control({"load-module", "module-pipe-source", pipeSource(sampleRate, channelCount)});
    server_.control({"set-default-source", microphoneName_});
    startMicrophone(sampleRate, channelCount);
}

void PulseWorld::unplug() {
    server_.control({"unload-module", "module-pipe-source"});
    microphone_.reset();
}

void PulseWorld::speak(const std::vector<std::int16_t>& samples) {
    microphone_->speak(samples);
}

void PulseWorld::suspend(bool isSuspended) {
    server_.control({"suspend-source", microphoneName_, isSuspended ? "1" : "0"});
}

void PulseWorld::killServer() {
    server_.kill();
    microphone_.reset();
}

void PulseWorld::restartServer(std::uint32_t sampleRate) {
    microphoneName_ = nextMicrophone();
    server_.start({"module-pipe-source " + pipeSource(sampleRate, 1)});
    startMicrophone(sampleRate, 1);
}

std::size_t PulseWorld::openStreams() const {
    const std::string list = server_.control({"list", "short", "source-outputs"});
    return static_cast<std::size_t>(std::count(list.begin(), list.end(), '\n'));
}

AudioWorldMaker realAudioWorld() {
    return {"PulseAudio", [] { return std::make_unique<PulseWorld>(); }};
}

}  // namespace tarvik::tests
