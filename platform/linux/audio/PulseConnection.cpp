#include "platform/linux/audio/PulseConnection.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds firstPause{0.1};
constexpr Seconds longestPause{60};

PulseProperties applicationProperties() {
    PulseProperties properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Tarvik Dictate");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "com.tarvik.dictate");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "com.tarvik.dictate");
    return properties;
}

}  // namespace

PulseConnection::PulseConnection(pa_mainloop_api* api, Events events)
    : api_(api), events_(std::move(events)), retry_(api), pause_(firstPause) {}

void PulseConnection::connect() {
    attempt();
}

void PulseConnection::attempt() {
    retry_.cancel();
    const PulseProperties properties = applicationProperties();
    context_.reset(pa_context_new_with_proplist(api_, nullptr, properties.get()));
    pa_context_set_state_callback(context_.get(), &PulseConnection::stateChanged, this);
    // A failure is reported through the state as well, save one that keeps it from leaving the
    // first.
    if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 &&
        pa_context_get_state(context_.get()) == PA_CONTEXT_UNCONNECTED) {
        failed();
    }
}

void PulseConnection::stateChanged(pa_context* context, void* self) {
    auto& connection = *static_cast<PulseConnection*>(self);
    switch (pa_context_get_state(context)) {
        case PA_CONTEXT_READY:
            connection.becameReady();
            break;
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            connection.failed();
            break;
        default:
            break;
    }
}

void PulseConnection::becameReady() {
    ready_ = true;
    knownLost_ = false;
    pause_ = firstPause;
    watch_.reset();
    events_.ready();
}

void PulseConnection::failed() {
    ready_ = false;
    const std::string reason = pa_strerror(pa_context_errno(context_.get()));
    if (!watch_) {
        if (const auto socket = ServerSocketWatch::pathFromEnvironment()) {
            watch_ = std::make_unique<ServerSocketWatch>(api_, *socket, [this] {
                pause_ = firstPause;
                attempt();
            });
        }
    }
    retry_.start(context_.get(), pause_, [this] { attempt(); });
    pause_ = std::min(pause_ * 2, longestPause);
    if (!std::exchange(knownLost_, true)) {
        events_.lost(reason);
    }
}

}  // namespace tarvik::linuxdesktop
