#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/audio/Microphone.h"
#include "platform/linux/audio/PulseHandles.h"

namespace tarvik::linuxdesktop {

/// What a sound server offers to record from.
struct MicrophoneOffer {
    /// The default source; empty when there is none or when it is a loudspeaker's monitor.
    std::optional<Microphone> standard;
    /// True while there is any microphone, the default one or not.
    bool any = false;

    bool operator==(const MicrophoneOffer&) const = default;
};

/// Follows a server's sources by its notifications. Loop locked, or its thread, for every
/// operation.
class MicrophoneTracker {
  public:
    /// `changed` is called on the loop's thread with every offer that differs from the one before,
    /// beginning with the first after follow().
    explicit MicrophoneTracker(std::function<void(const MicrophoneOffer&)> changed);

    /// Follows the server of `context`, which is ready, in place of any other.
    void follow(pa_context* context);
    /// Forgets the server; nothing is called until follow().
    void forget();

  private:
    static void notified(pa_context* context, pa_subscription_event_type_t type,
                         std::uint32_t index, void* self);
    static void serverAnswered(pa_context* context, const pa_server_info* info, void* self);
    static void sourceAnswered(pa_context* context, const pa_source_info* info, int last,
                               void* self);
    void ask();
    void answered();

    std::function<void(const MicrophoneOffer&)> changed_;
    pa_context* context_ = nullptr;
    PulseOperation subscription_;
    PulseOperation serverQuestion_;
    PulseOperation sourceQuestion_;
    bool asking_ = false;
    bool askAgain_ = false;
    std::string standardName_;
    std::vector<Microphone> microphones_;
    std::optional<MicrophoneOffer> offer_;
};

}  // namespace tarvik::linuxdesktop
