#include "tests/conformance/audio/PulseWorld.h"

#include <algorithm>

namespace tarvik::tests {

PulseWorld::PulseWorld() {
    server_.start();
    service_ = std::make_unique<linuxdesktop::PulseAudioService>(mainQueue_, log_);
    const bool known =
        runUntil([this] { return service_->authorizationStatusForAudio() != 0; }, Seconds(5));
    EXPECT_TRUE(known) << "the service does not find the server";
}

PulseWorld::~PulseWorld() {
    service_.reset();
    if (testing::Test::HasFailure()) {
        for (const std::string& line : log_.lines()) {
            std::printf("    %s\n", line.c_str());
        }
    }
}

bool PulseWorld::runUntil(const std::function<bool()>& condition, Seconds limit) {
    return mainQueue_.runUntil(condition, limit);
}

std::string PulseWorld::nextMicrophone() {
    return "mic" + std::to_string(++microphones_);
}

std::string PulseWorld::pipeSource(std::uint32_t sampleRate, std::uint32_t channelCount) const {
    return "source_name=" + microphone_ + " file=" + (server_.folder() / microphone_).string() +
           " format=s16le rate=" + std::to_string(sampleRate) +
           " channels=" + std::to_string(channelCount);
}

void PulseWorld::turnOn(std::uint32_t sampleRate, std::uint32_t channelCount) {
    hardware_ =
        std::make_unique<PipeMicrophone>(server_.folder() / microphone_, sampleRate, channelCount);
}

void PulseWorld::plug(std::uint32_t sampleRate, std::uint32_t channelCount) {
    microphone_ = nextMicrophone();
    server_.control({"load-module", "module-pipe-source", pipeSource(sampleRate, channelCount)});
    server_.control({"set-default-source", microphone_});
    turnOn(sampleRate, channelCount);
}

void PulseWorld::unplug() {
    server_.control({"unload-module", "module-pipe-source"});
    hardware_.reset();
}

void PulseWorld::speak(const std::vector<std::int16_t>& samples) {
    hardware_->speak(samples);
}

void PulseWorld::suspend(bool isSuspended) {
    server_.control({"suspend-source", microphone_, isSuspended ? "1" : "0"});
}

void PulseWorld::killServer() {
    server_.kill();
    hardware_.reset();
}

void PulseWorld::restartServer(std::uint32_t sampleRate) {
    microphone_ = nextMicrophone();
    server_.start({"module-pipe-source " + pipeSource(sampleRate, 1)});
    turnOn(sampleRate, 1);
}

std::size_t PulseWorld::openStreams() const {
    const std::string list = server_.control({"list", "short", "source-outputs"});
    return static_cast<std::size_t>(std::count(list.begin(), list.end(), '\n'));
}

}  // namespace tarvik::tests
