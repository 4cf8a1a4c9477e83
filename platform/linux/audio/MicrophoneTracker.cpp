// SPDX-License-Identifier: MIT

#include "platform/linux/audio/MicrophoneTracker.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

MicrophoneTracker::MicrophoneTracker(std::function<void(const AvailableMicrophones&)> onChange)
    : onChange_(std::move(onChange)) {}

void MicrophoneTracker::follow(pa_context* context) {
    forget();
    context_ = context;
    pa_context_set_subscribe_callback(context, &MicrophoneTracker::sourcesChanged, this);
    constexpr auto mask = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER |
                                                              PA_SUBSCRIPTION_MASK_SOURCE);
    subscription_.reset(pa_context_subscribe(context, mask, nullptr, nullptr));
    query();
}

void MicrophoneTracker::forget() {
    context_ = nullptr;
    subscription_.reset();
    serverQuery_.reset();
    sourceQuery_.reset();
    isQuerying_ = false;
    isQueryStale_ = false;
    available_.reset();
}

void MicrophoneTracker::sourcesChanged(pa_context*, pa_subscription_event_type_t, std::uint32_t,
                                       void* self) {
    auto& tracker = *static_cast<MicrophoneTracker*>(self);
    if (tracker.isQuerying_) {
        // The pending answers may be older than this notification. One query after them serves all
        // notifications until then, of which a dragged volume slider causes many.
        tracker.isQueryStale_ = true;
    } else {
        tracker.query();
    }
}

void MicrophoneTracker::query() {
    isQuerying_ = true;
    isQueryStale_ = false;
    microphones_.clear();
    serverQuery_.reset(
        pa_context_get_server_info(context_, &MicrophoneTracker::serverInfoReceived, this));
    // The server answers in the order of the requests, so the end of the list completes the query.
    sourceQuery_.reset(
        pa_context_get_source_info_list(context_, &MicrophoneTracker::sourceInfoReceived, this));
}

void MicrophoneTracker::serverInfoReceived(pa_context*, const pa_server_info* info, void* self) {
    auto& tracker = *static_cast<MicrophoneTracker*>(self);
    const bool isNamed = info != nullptr && info->default_source_name != nullptr;
    tracker.defaultSourceName_ = isNamed ? info->default_source_name : "";
}

void MicrophoneTracker::sourceInfoReceived(pa_context*, const pa_source_info* info, int last,
                                           void* self) {
    auto& tracker = *static_cast<MicrophoneTracker*>(self);
    if (last != 0) {
        // An error (a negative number) leaves the list short. Only a failing server answers with an
        // error, and the connection reports that server as lost.
        tracker.completeQuery();
    } else if (info->monitor_of_sink == PA_INVALID_INDEX) {
        tracker.microphones_.push_back(
            {info->index, info->name, info->sample_spec.rate, info->channel_map});
    }
}

void MicrophoneTracker::completeQuery() {
    AvailableMicrophones available;
    available.hasAny = !microphones_.empty();
    const auto found = std::find_if(
        microphones_.begin(), microphones_.end(),
        [this](const Microphone& microphone) { return microphone.name == defaultSourceName_; });
    if (found != microphones_.end()) {
        available.defaultMicrophone = *found;
    }
    isQuerying_ = false;
    if (available_ != available) {
        available_ = std::move(available);
        onChange_(*available_);
    }
    if (isQueryStale_) {
        query();
    }
}

}  // namespace tarvik::linuxdesktop
