// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/AudioEngine.h"
#include "platform/linux/audio/DeinterleavingBuffer.h"
#include "platform/linux/audio/PulseServer.h"
#include "platform/linux/audio/PulseTimer.h"
#include "platform/linux/audio/RecordStream.h"

namespace tarvik::linuxdesktop {

/// Captures the default microphone of the sound server.
///
/// inputFormatForBus() opens the microphone's stream corked, so that start() only has to uncork the
/// stream. Sound from before start() is not delivered. Until stop(), the format is that of the open
/// stream. A stream that is not started within five seconds is closed again. After stop() no stream
/// is open. The server's lock guards every field; the loop's thread holds that lock while it
/// delivers.
class PulseAudioEngine final : public platform::AudioEngine, private platform::AudioInputNode {
  public:
    explicit PulseAudioEngine(std::shared_ptr<PulseServer> server);
    ~PulseAudioEngine() override;

    platform::AudioInputNode& inputNode() override { return *this; }
    void prepare() override;
    std::optional<Error> start() override;
    void stop() override;

  private:
    platform::AudioFormat inputFormatForBus(std::uint32_t bus) override;
    void installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                         const platform::AudioFormat& format,
                         platform::AudioTapBlock block) override;
    void removeTapOnBus(std::uint32_t bus) override;

    struct Tap {
        std::uint32_t bufferSize;
        platform::AudioTapBlock block;
    };

    void prepareStream();
    bool openStream();
    bool hasStreamOf(const Microphone& microphone) const;
    RecordStream::Events streamEvents();
    void deliver(const float* samples, std::size_t frameCount);
    void handleFailure(const std::string& reason);
    void awaitSound(Seconds delay);
    void checkDelivery();

    std::shared_ptr<PulseServer> server_;
    std::optional<Tap> tap_;
    std::optional<DeinterleavingBuffer> buffer_;
    std::unique_ptr<RecordStream> stream_;
    /// Closes a stream that is not started.
    PulseTimer closeTimer_;
    /// Reports a failure after the delay of PulseServer::countStreamFailure().
    PulseTimer failureTimer_;
    /// Finds out that the microphone delivers nothing.
    PulseTimer deliveryTimer_;
    /// The time of the start or of the last delivery, on the clock of libpulse.
    pa_usec_t lastDelivery_ = 0;
    bool isRunning_ = false;
};

}  // namespace tarvik::linuxdesktop
