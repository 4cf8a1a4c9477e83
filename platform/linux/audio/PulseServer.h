// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/OneShot.h"
#include "platform/CaptureAuthorization.h"
#include "platform/Log.h"
#include "platform/linux/audio/AvailableMicrophones.h"
#include "platform/linux/audio/ConfigurationChanges.h"
#include "platform/linux/audio/Microphone.h"
#include "platform/linux/audio/MicrophoneTracker.h"
#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/PulseMainloop.h"

namespace tarvik::linuxdesktop {

/// The connection to the session's sound server and the known state of that server. The service and
/// its engines share one.
///
/// "Locked" marks an operation that needs the loop's lock: call it on the loop's thread, or while
/// holding a lock().
class PulseServer {
  public:
    /// Starts to connect, on a thread of its own. `log` outlives the object.
    PulseServer(std::shared_ptr<ConfigurationChanges> changes, platform::Log& log);
    /// Ends the connection and its thread. Not on the loop's thread.
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    /// Holds the loop's lock; waits only for a running callback. Not on the loop's thread.
    [[nodiscard]] PulseMainloop::Lock lock() { return PulseMainloop::Lock(mainloop_); }

    /// The default microphone; empty when there is none, or no server. Locked.
    const std::optional<Microphone>& microphone() const { return available_.defaultMicrophone; }
    /// Whether a server has accepted the connection. Locked.
    bool isReady() const { return connection_.isReady(); }
    /// The connection in any state. Locked.
    pa_context* context() const { return connection_.context(); }
    /// The loop that calls every callback. Any thread.
    pa_mainloop_api* api() const { return mainloop_.api(); }

    /// A platform::AuthorizationStatus. Any thread.
    int authorizationStatus() const { return authorizationStatus_; }
    /// Calls `answer` on the loop's thread with whether a microphone may be recorded, as soon as a
    /// server has listed its microphones. Locked.
    void requestAuthorization(std::shared_ptr<OneShot<bool>> answer);
    /// Calls `handler` once, as soon as a server has listed its microphones or the first attempt to
    /// connect has failed: on the loop's thread, or inside this call when that has happened
    /// already. Locked.
    void whenFirstKnown(std::function<void()> handler);

    /// Reports a configuration change to the observers and writes `reason` to the log. Locked.
    void configurationChanged(const std::string& reason);
    /// Writes one line to the log. Any thread.
    void log(const std::string& line);

    /// Counts the failure of a stream. Returns the delay before the microphone is opened again: 0
    /// for the first failure, then 0.2 s, doubled with each further failure up to 5 s. Locked.
    Seconds countStreamFailure();
    /// Starts the count of failures again, because a stream delivers. Locked.
    void resetStreamFailures() { streamFailures_ = 0; }

  private:
    void connectionReady();
    void connectionLost(const std::string& reason);
    void microphonesChanged(const AvailableMicrophones& available);
    void setAuthorizationStatus(platform::AuthorizationStatus status);
    void answerAuthorizationRequests();
    bool markKnown();

    std::shared_ptr<ConfigurationChanges> changes_;
    platform::Log& log_;
    PulseMainloop mainloop_;
    MicrophoneTracker tracker_;
    PulseConnection connection_;
    AvailableMicrophones available_;
    /// Whether a server has listed its microphones or the first attempt to connect has failed. Only
    /// later differences are configuration changes.
    bool isKnown_ = false;
    unsigned streamFailures_ = 0;
    std::atomic<int> authorizationStatus_ = 0;
    std::vector<std::shared_ptr<OneShot<bool>>> authorizationRequests_;
    std::vector<std::function<void()>> firstKnownHandlers_;
};

}  // namespace tarvik::linuxdesktop
