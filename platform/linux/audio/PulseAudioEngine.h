#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/AudioEngine.h"
#include "platform/linux/audio/FrameCollector.h"
#include "platform/linux/audio/LoopTimer.h"
#include "platform/linux/audio/PulseServer.h"
#include "platform/linux/audio/RecordStream.h"

namespace tarvik::linuxdesktop {

/// Captures the default microphone of the sound server.
///
/// Asking for the format opens the microphone's stream without recording, so that start() has only
/// to let it flow; a stream that is not started within ten seconds is closed again. After stop()
/// nothing of the microphone is open. Every field is guarded by the server's lock, which the
/// delivery thread holds while it delivers.
class PulseAudioEngine final : public platform::AudioEngine,
                               private platform::AudioInputNode,
                               private RecordStreamListener {
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

    void recorded(const float* samples, std::size_t frameCount) override;
    void suspended(bool isSuspended) override;
    void failed(const std::string& reason) override;

    struct Tap {
        std::uint32_t bufferSize;
        platform::AudioTapBlock block;
    };

    bool openStream();
    void prepareStream();

    std::shared_ptr<PulseServer> server_;
    std::optional<Tap> tap_;
    std::optional<FrameCollector> collector_;
    std::unique_ptr<RecordStream> stream_;
    LoopTimer release_;
    LoopTimer rest_;
    bool running_ = false;
};

}  // namespace tarvik::linuxdesktop
