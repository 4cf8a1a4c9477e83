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
#include "platform/linux/audio/ConfigurationChanges.h"
#include "platform/linux/audio/Microphone.h"
#include "platform/linux/audio/MicrophoneTracker.h"
#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/PulseMainloop.h"

namespace tarvik::linuxdesktop {

/// What is known of the session's sound server at this moment; shared by the service and its
/// engines.
///
/// Operations marked "inside" are for the loop's thread, or for others while they hold a lock().
class PulseServer {
  public:
    PulseServer(std::shared_ptr<ConfigurationChanges> changes, platform::Log& log);
    /// Not on the loop's thread.
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    /// Keeps the loop's thread out. Waits only for a callback that is running.
    [[nodiscard]] PulseMainloop::Lock lock() { return PulseMainloop::Lock(mainloop_); }

    /// The default microphone; empty when there is none, or no server. Inside.
    const std::optional<Microphone>& microphone() const { return offer_.standard; }
    /// True while a server answers. Inside.
    bool isReady() const { return connection_.isReady(); }
    /// The connection, in whatever state. Inside.
    pa_context* context() const { return connection_.context(); }
    pa_mainloop_api* api() const { return mainloop_.api(); }

    /// An AuthorizationStatus. Any thread.
    int authorizationStatus() const { return authorizationStatus_; }
    /// Calls `answer` on the loop's thread once a server has answered, at once if one has. Inside.
    void whenKnown(std::shared_ptr<OneShot<bool>> answer);
    /// Calls `handler` once it is known what is there, be it nothing: on the loop's thread, or at
    /// once when it is known already. Inside.
    void whenFirstKnown(std::function<void()> handler);

    /// Tells the observers, and the log why. Inside.
    void configurationChanged(const std::string& reason);
    /// Writes one line to the log. Any thread.
    void log(const std::string& line);

    /// Notes that a microphone delivers. Inside.
    void streamDelivered() { failuresInARow_ = 0; }
    /// Notes that a microphone failed; returns for how long to let it rest before it is opened
    /// again: not at all the first time, then longer and longer, up to 5 s. Inside.
    Seconds restAfterFailure();

  private:
    void connectionReady();
    void connectionLost(const std::string& reason);
    void offerChanged(const MicrophoneOffer& offer);
    void setAuthorizationStatus(platform::AuthorizationStatus status);
    void answerWaiting();
    bool becomeKnown();

    std::shared_ptr<ConfigurationChanges> changes_;
    platform::Log& log_;
    PulseMainloop mainloop_;
    MicrophoneTracker tracker_;
    PulseConnection connection_;
    MicrophoneOffer offer_;
    /// True once it is known what is there, be it nothing: what follows is a change.
    bool known_ = false;
    unsigned failuresInARow_ = 0;
    std::atomic<int> authorizationStatus_ = 0;
    std::vector<std::shared_ptr<OneShot<bool>>> waiting_;
    std::vector<std::function<void()>> awaitingFirst_;
};

}  // namespace tarvik::linuxdesktop
