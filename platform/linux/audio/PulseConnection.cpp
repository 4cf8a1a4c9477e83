// SPDX-License-Identifier: MIT

#include "platform/linux/audio/PulseConnection.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds minRetryInterval{0.1};
constexpr Seconds maxRetryInterval{60};

PulseProperties applicationProperties() {
    PulseProperties properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Tarvik Dictate");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "com.tarvik.dictate");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "com.tarvik.dictate");
    return properties;
}

}  // namespace

PulseConnection::PulseConnection(pa_mainloop_api* api, Events events)
    : api_(api), events_(std::move(events)), retryTimer_(api), retryInterval_(minRetryInterval) {}

void PulseConnection::connect() {
    retryTimer_.cancel();
    const PulseProperties properties = applicationProperties();
    context_.reset(pa_context_new_with_proplist(api_, nullptr, properties.get()));
    pa_context_set_state_callback(context_.get(), &PulseConnection::stateChanged, this);
    // The state callback also reports failures, but not a failure that leaves the context
    // unconnected.
    if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 &&
        pa_context_get_state(context_.get()) == PA_CONTEXT_UNCONNECTED) {
        handleFailure();
    }
}

void PulseConnection::stateChanged(pa_context* context, void* self) {
    auto& connection = *static_cast<PulseConnection*>(self);
    switch (pa_context_get_state(context)) {
        case PA_CONTEXT_READY:
            connection.handleReady();
            break;
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            connection.handleFailure();
            break;
        default:
            break;
    }
}

void PulseConnection::handleReady() {
    isReady_ = true;
    isLossReported_ = false;
    retryInterval_ = minRetryInterval;
    watch_.reset();
    events_.onReady();
}

void PulseConnection::handleFailure() {
    isReady_ = false;
    const std::string reason = pa_strerror(pa_context_errno(context_.get()));
    if (!watch_) {
        if (const auto socket = ServerSocketWatch::pathFromEnvironment()) {
            watch_ = std::make_unique<ServerSocketWatch>(api_, *socket, [this] {
                retryInterval_ = minRetryInterval;
                connect();
            });
        }
    }
    retryTimer_.start(context_.get(), retryInterval_, [this] { connect(); });
    retryInterval_ = std::min(retryInterval_ * 2, maxRetryInterval);
    if (!std::exchange(isLossReported_, true)) {
        events_.onLost(reason);
    }
}

}  // namespace tarvik::linuxdesktop
