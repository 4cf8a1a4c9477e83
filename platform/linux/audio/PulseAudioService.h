// SPDX-License-Identifier: MIT
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

/// Captures audio by the session's sound server: PulseAudio, or PipeWire with its PulseAudio
/// interface.
///
/// One connection lives as long as the service and its engines, and follows the server's default
/// source. A lost connection is made again when the server is back. The service wakes the process
/// for changes, and to look for a server while there is none. Main thread only; no operation waits
/// for the server. Engines may outlive the service.
class PulseAudioService : public platform::AudioService, public platform::CaptureAuthorization {
  public:
    /// Starts to connect. `mainQueue` and `log` outlive the service and its engines.
    PulseAudioService(platform::MainQueue& mainQueue, platform::Log& log);
    ~PulseAudioService() override;

    std::unique_ptr<platform::AudioEngine> makeEngine() override;
    [[nodiscard]] std::unique_ptr<platform::AudioObservation> observeConfigurationChange(
        std::function<void()> handler) override;

    /// Calls `handler` once, as soon as a server has listed its microphones or the first attempt to
    /// connect has failed: inside this call, or on the service's own thread. `handler` must not
    /// block.
    void whenFirstKnown(std::function<void()> handler);

    /// authorized while the server has a source that is not a monitor, denied while it has none,
    /// notDetermined while there is no server.
    int authorizationStatusForAudio() override;
    /// Calls `handler` as soon as a server has listed its microphones, on the service's own thread.
    /// Without an answer within two seconds, `handler` is called with false on the main thread,
    /// even when the service is gone by then.
    void requestAccessForAudio(std::function<void(bool granted)> handler) override;

  private:
    platform::MainQueue& mainQueue_;
    std::shared_ptr<ConfigurationChanges> changes_;
    std::shared_ptr<PulseServer> server_;
};

}  // namespace tarvik::linuxdesktop
