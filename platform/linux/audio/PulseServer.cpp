#include "platform/linux/audio/PulseServer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

std::string describe(const MicrophoneOffer& offer) {
    if (!offer.standard) {
        return "no microphone";
    }
    return "microphone " + offer.standard->name + ", " +
           std::to_string(offer.standard->sampleRate) +
           " Hz, channels: " + std::to_string(offer.standard->channels.channels);
}

}  // namespace

PulseServer::PulseServer(std::shared_ptr<ConfigurationChanges> changes, platform::Log& log)
    : changes_(std::move(changes)),
      log_(log),
      tracker_([this](const MicrophoneOffer& offer) { offerChanged(offer); }),
      connection_(mainloop_.api(),
                  {[this] { connectionReady(); },
                   [this](const std::string& reason) { connectionLost(reason); }}) {
    // Connecting reads files and may ask the display for the server's name: on the loop's thread.
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

void PulseServer::whenKnown(std::shared_ptr<OneShot<bool>> answer) {
    waiting_.push_back(std::move(answer));
    if (authorizationStatus_ != static_cast<int>(platform::AuthorizationStatus::notDetermined)) {
        pa_mainloop_api_once(
            mainloop_.api(),
            [](pa_mainloop_api*, void* self) { static_cast<PulseServer*>(self)->answerWaiting(); },
            this);
    }
}

void PulseServer::whenFirstKnown(std::function<void()> handler) {
    if (known_) {
        handler();
    } else {
        awaitingFirst_.push_back(std::move(handler));
    }
}

// Whether it was known before.
bool PulseServer::becomeKnown() {
    for (const auto& handler : std::exchange(awaitingFirst_, {})) {
        handler();
    }
    return std::exchange(known_, true);
}

void PulseServer::configurationChanged(const std::string& reason) {
    log(reason);
    changes_->report();
}

void PulseServer::log(const std::string& line) {
    log_.write("TarvikDictate: sound — " + line);
}

Seconds PulseServer::restAfterFailure() {
    constexpr Seconds step{0.1};
    constexpr Seconds longest{5};
    const unsigned failures = failuresInARow_++;
    return failures == 0 ? Seconds(0)
                         : std::min(step * std::exp2(std::min(failures, 10U)), longest);
}

void PulseServer::connectionReady() {
    tracker_.follow(connection_.context());
}

void PulseServer::connectionLost(const std::string& reason) {
    tracker_.forget();
    offer_ = {};
    setAuthorizationStatus(platform::AuthorizationStatus::notDetermined);
    if (becomeKnown()) {
        configurationChanged("server lost: " + reason);
    } else {
        log("no server: " + reason);
    }
}

void PulseServer::offerChanged(const MicrophoneOffer& offer) {
    // A microphone that is not the default one concerns the permission only.
    const bool sameMicrophone = offer.standard == offer_.standard;
    offer_ = offer;
    setAuthorizationStatus(offer.any ? platform::AuthorizationStatus::authorized
                                     : platform::AuthorizationStatus::denied);
    if (!becomeKnown()) {
        log(describe(offer));
    } else if (!sameMicrophone) {
        configurationChanged("now " + describe(offer));
    }
}

void PulseServer::setAuthorizationStatus(platform::AuthorizationStatus status) {
    authorizationStatus_ = static_cast<int>(status);
    if (status != platform::AuthorizationStatus::notDetermined) {
        answerWaiting();
    }
}

void PulseServer::answerWaiting() {
    const bool granted =
        authorizationStatus_ == static_cast<int>(platform::AuthorizationStatus::authorized);
    for (const auto& answer : std::exchange(waiting_, {})) {
        if (const auto callback = answer->take()) {
            callback(granted);
        }
    }
}

}  // namespace tarvik::linuxdesktop
