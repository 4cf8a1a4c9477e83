#include "platform/linux/audio/MicrophoneTracker.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

MicrophoneTracker::MicrophoneTracker(std::function<void(const MicrophoneOffer&)> changed)
    : changed_(std::move(changed)) {}

void MicrophoneTracker::follow(pa_context* context) {
    forget();
    context_ = context;
    pa_context_set_subscribe_callback(context, &MicrophoneTracker::notified, this);
    constexpr auto mask = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER |
                                                              PA_SUBSCRIPTION_MASK_SOURCE);
    subscription_.reset(pa_context_subscribe(context, mask, nullptr, nullptr));
    ask();
}

void MicrophoneTracker::forget() {
    context_ = nullptr;
    subscription_.reset();
    serverQuestion_.reset();
    sourceQuestion_.reset();
    asking_ = false;
    askAgain_ = false;
    offer_.reset();
}

void MicrophoneTracker::notified(pa_context*, pa_subscription_event_type_t, std::uint32_t,
                                 void* self) {
    auto& tracker = *static_cast<MicrophoneTracker*>(self);
    if (tracker.asking_) {
        // The answers on their way may be older than this; a slider that is dragged notifies often.
        tracker.askAgain_ = true;
    } else {
        tracker.ask();
    }
}

void MicrophoneTracker::ask() {
    asking_ = true;
    askAgain_ = false;
    microphones_.clear();
    serverQuestion_.reset(
        pa_context_get_server_info(context_, &MicrophoneTracker::serverAnswered, this));
    // The server answers in the order of the questions, so the list's end completes the pair.
    sourceQuestion_.reset(
        pa_context_get_source_info_list(context_, &MicrophoneTracker::sourceAnswered, this));
}

void MicrophoneTracker::serverAnswered(pa_context*, const pa_server_info* info, void* self) {
    auto& tracker = *static_cast<MicrophoneTracker*>(self);
    const bool named = info != nullptr && info->default_source_name != nullptr;
    tracker.standardName_ = named ? info->default_source_name : "";
}

void MicrophoneTracker::sourceAnswered(pa_context*, const pa_source_info* info, int last,
                                       void* self) {
    auto& tracker = *static_cast<MicrophoneTracker*>(self);
    if (last != 0) {
        // An error (below zero) leaves the list short; a server that fails is lost anyhow.
        tracker.answered();
    } else if (info->monitor_of_sink == PA_INVALID_INDEX) {
        tracker.microphones_.push_back(
            {info->index, info->name, info->sample_spec.rate, info->channel_map});
    }
}

void MicrophoneTracker::answered() {
    MicrophoneOffer offer;
    offer.any = !microphones_.empty();
    const auto standard = std::find_if(
        microphones_.begin(), microphones_.end(),
        [this](const Microphone& microphone) { return microphone.name == standardName_; });
    if (standard != microphones_.end()) {
        offer.standard = *standard;
    }
    asking_ = false;
    if (offer_ != offer) {
        offer_ = std::move(offer);
        changed_(*offer_);
    }
    if (askAgain_) {
        ask();
    }
}

}  // namespace tarvik::linuxdesktop
