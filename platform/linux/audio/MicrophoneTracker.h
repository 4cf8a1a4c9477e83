// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/audio/AvailableMicrophones.h"
#include "platform/linux/audio/Microphone.h"
#include "platform/linux/audio/PulseHandles.h"

namespace tarvik::linuxdesktop {

/// Follows the microphones of a sound server by the server's notifications. Every operation needs
/// the loop's lock.
class MicrophoneTracker {
  public:
    /// `onChange` is called on the loop's thread with the first answer after follow(), and then
    /// with every answer that differs from the one before.
    explicit MicrophoneTracker(std::function<void(const AvailableMicrophones&)> onChange);

    /// Follows the server of `context`, which is ready, instead of any other server.
    void follow(pa_context* context);
    /// Forgets the server; `onChange` is not called until follow().
    void forget();

  private:
    static void sourcesChanged(pa_context* context, pa_subscription_event_type_t type,
                               std::uint32_t index, void* self);
    static void serverInfoReceived(pa_context* context, const pa_server_info* info, void* self);
    static void sourceInfoReceived(pa_context* context, const pa_source_info* info, int last,
                                   void* self);
    void query();
    void completeQuery();

    std::function<void(const AvailableMicrophones&)> onChange_;
    pa_context* context_ = nullptr;
    PulseOperation subscription_;
    PulseOperation serverQuery_;
    PulseOperation sourceQuery_;
    bool isQuerying_ = false;
    bool isQueryStale_ = false;
    std::string defaultSourceName_;
    std::vector<Microphone> microphones_;
    /// The last answer; empty until the first one after follow().
    std::optional<AvailableMicrophones> available_;
};

}  // namespace tarvik::linuxdesktop
