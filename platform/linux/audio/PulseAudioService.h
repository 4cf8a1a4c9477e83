#pragma once

#include <functional>
#include <memory>

#include "platform/AudioEngine.h"
#include "platform/CaptureAuthorization.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

namespace tarvik::linuxdesktop {

class ConfigurationChanges;
class PulseServer;

/// The microphone as the session's sound server (PulseAudio, or PipeWire's stand-in for it) offers
/// it.
///
/// One connection lives as long as the service and follows the server's default source; a server
/// that goes away is joined again when it comes back. Nothing wakes the process while nothing
/// changes. Main thread only; no operation waits for the server. Engines may outlive the service.
class PulseAudioService : public platform::AudioService, public platform::CaptureAuthorization {
  public:
    /// Starts to connect. `mainQueue` and `log` outlive the service and its engines.
    PulseAudioService(platform::MainQueue& mainQueue, platform::Log& log);
    ~PulseAudioService() override;

    std::unique_ptr<platform::AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observeConfigurationChange(
        std::function<void()> handler) override;

    /// Calls `handler` as soon as it is known what there is to record from, be it nothing: at once,
    /// or on a thread of the service's own, where it does not wait.
    void whenFirstKnown(std::function<void()> handler);

    /// authorized while the server offers a source that is not a loudspeaker's monitor, denied
    /// while it offers none, notDetermined while no server answers.
    int authorizationStatusForAudio() override;
    /// Answers as soon as a server has answered, and with false when none has within two seconds.
    /// A handler that still waits when the service is destroyed hears false at that time.
    void requestAccessForAudio(std::function<void(bool granted)> handler) override;

  private:
    platform::MainQueue& mainQueue_;
    std::shared_ptr<ConfigurationChanges> changes_;
    std::shared_ptr<PulseServer> server_;
};

}  // namespace tarvik::linuxdesktop
