// SPDX-License-Identifier: MIT

#include "platform/linux/audio/PulseServer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

std::string describe(const AvailableMicrophones& available) {
    if (!available.defaultMicrophone) {
        return "no microphone";
    }
    const Microphone& microphone = *available.defaultMicrophone;
    return "microphone " + microphone.name + ", " + std::to_string(microphone.sampleRate) +
           " Hz, channels: " + std::to_string(microphone.channels.channels);
}

bool isSameSource(const std::optional<Microphone>& one, const std::optional<Microphone>& other) {
    return one && other ? one->isSameSource(*other) : one.has_value() == other.has_value();
}

}  // namespace

PulseServer::PulseServer(std::shared_ptr<ConfigurationChanges> changes, platform::Log& log)
    : changes_(std::move(changes)),
      log_(log),
      tracker_([this](const AvailableMicrophones& available) { microphonesChanged(available); }),
      connection_(mainloop_.api(),
                  {[this] { connectionReady(); },
                   [this](const std::string& reason) { connectionLost(reason); }}) {
    // On the loop's thread, because connecting reads files and may ask the display server.
    pa_mainloop_api_once(
        mainloop_.api(),
        [](pa_mainloop_api*, void* self) {
            static_cast<PulseServer*>(self)->connection_.connect();
        },
        this);
    if (!mainloop_.start()) {
        this->log("no thread for the sound server's connection");
    }
}

PulseServer::~PulseServer() {
    mainloop_.stop();
}

void PulseServer::requestAuthorization(std::shared_ptr<OneShot<bool>> answer) {
    authorizationRequests_.push_back(std::move(answer));
    if (authorizationStatus_ != static_cast<int>(platform::AuthorizationStatus::notDetermined)) {
        pa_mainloop_api_once(
            mainloop_.api(),
            [](pa_mainloop_api*, void* self) {
                static_cast<PulseServer*>(self)->answerAuthorizationRequests();
            },
            this);
    }
}

void PulseServer::whenFirstKnown(std::function<void()> handler) {
    if (isKnown_) {
        handler();
    } else {
        firstKnownHandlers_.push_back(std::move(handler));
    }
}

// Returns whether the state was known before.
bool PulseServer::markKnown() {
    for (const auto& handler : std::exchange(firstKnownHandlers_, {})) {
        handler();
    }
    return std::exchange(isKnown_, true);
}

void PulseServer::configurationChanged(const std::string& reason) {
    log(reason);
    changes_->report();
}

void PulseServer::log(const std::string& line) {
    log_.write("TarvikDictate: sound — " + line);
}

Seconds PulseServer::countStreamFailure() {
    constexpr Seconds baseDelay{0.1};
    constexpr Seconds maxDelay{5};
    const unsigned earlierFailures = streamFailures_++;
    return earlierFailures == 0
               ? Seconds(0)
               : std::min(baseDelay * std::exp2(std::min(earlierFailures, 10U)), maxDelay);
}

void PulseServer::connectionReady() {
    tracker_.follow(connection_.context());
}

void PulseServer::connectionLost(const std::string& reason) {
    tracker_.forget();
    available_ = {};
    setAuthorizationStatus(platform::AuthorizationStatus::notDetermined);
    if (markKnown()) {
        configurationChanged("server lost: " + reason);
    } else {
        log("no server: " + reason);
    }
}

void PulseServer::microphonesChanged(const AvailableMicrophones& available) {
    // Microphones besides the default one only matter for the authorization status. The rate only
    // matters for the next stream: a PipeWire source may report another rate whenever it starts to
    // run, and an open stream goes on, resampled by the server.
    const bool isSameDefault =
        isSameSource(available.defaultMicrophone, available_.defaultMicrophone);
    available_ = available;
    setAuthorizationStatus(available.hasAny ? platform::AuthorizationStatus::authorized
                                            : platform::AuthorizationStatus::denied);
    if (!markKnown()) {
        log(describe(available));
    } else if (!isSameDefault) {
        configurationChanged("now " + describe(available));
    }
}

void PulseServer::setAuthorizationStatus(platform::AuthorizationStatus status) {
    authorizationStatus_ = static_cast<int>(status);
    if (status != platform::AuthorizationStatus::notDetermined) {
        answerAuthorizationRequests();
    }
}

void PulseServer::answerAuthorizationRequests() {
    const bool granted =
        authorizationStatus_ == static_cast<int>(platform::AuthorizationStatus::authorized);
    for (const auto& answer : std::exchange(authorizationRequests_, {})) {
        if (const auto callback = answer->take()) {
            callback(granted);
        }
    }
}

}  // namespace tarvik::linuxdesktop
