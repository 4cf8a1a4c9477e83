// SPDX-License-Identifier: MIT

#include <cmath>
#include <utility>

#include "app/AppDelegate.h"
#include "base/Required.h"
#include "base/Weakly.h"
#include "insertion/InsertionStep.h"
#include "settings/KeychainStore.h"
#include "speech/ListenUrl.h"
#include "usage/CTAWindowController.h"
#include "usage/UsageTracker.h"

namespace tarvik {

namespace {

/// A recording that begins within this time after a stop finds the engine running.
constexpr Seconds deferredStopDelay{0.3};
constexpr Seconds callToActionDelay{1.0};
/// In hertz. Announced to the service when the microphone reports no valid rate.
constexpr std::int64_t fallbackSampleRate = 48000;

}  // namespace

void AppDelegate::setupHotkey() {
    toggle_ = std::make_shared<ToggleHotkey>(platform_.eventManager(), platform_.mainQueue(),
                                             platform_.log());
    toggle_->onPress = weakly(*this, &AppDelegate::startRecording);
    toggle_->onRelease = weakly(*this, &AppDelegate::stopRecording);
    toggle_->onToggle = weakly(*this, &AppDelegate::toggleRecording);
    toggle_->start();
}

void AppDelegate::toggleRecording() {
    if (isRecording_) {
        stopRecording();
    } else {
        startRecording();
    }
}

void AppDelegate::startRecording() {
    if (isRecording_ || onReadyToTerminate_) {
        return;
    }
    const std::optional<std::string> apiKey = KeychainStore::shared().apiKey();
    if (!apiKey) {
        // Posted, because a hotkey's callback must not wait for the user.
        platform_.mainQueue().async(weakly(*this, &AppDelegate::promptForApiKey));
        return;
    }
    isRecording_ = true;
    ++sessionGeneration_;
    lastFinalTranscript_.clear();
    recordingStartTime_ = platform_.clock().now();
    lastFinalReceived_ = recordingStartTime_;
    startAutoStopTimer();
    platform_.log().write(
        "TarvikDictate: startRecording (session=" + std::to_string(sessionGeneration_) + ")");
    originatingApp_ = platform_.workspace().frontmostApplication();
    originatingElement_ = currentFocusedAXElement();
    updateStatusIcon(true);

    const std::shared_ptr<DeepgramClient> client =
        DeepgramClient::make({platform_.webSockets(), platform_.mainQueue(), platform_.log()},
                             streamingHost(platform_.userDefaults()), *apiKey, inputSampleRate());
    client->onTranscript = weakly(*this, &AppDelegate::handleTranscript);
    client->onError = [&log = platform_.log()](const Error& error) {
        log.write("Deepgram error: " + error.localizedDescription);
    };
    deepgram_.store(client);
    client->connect(weakly(*this, &AppDelegate::handleConnected));
}

std::int64_t AppDelegate::inputSampleRate() {
    platform::AudioInputNode& input = required(audio_).engine().inputNode();
    const double rate = input.inputFormatForBus(AudioCapture::inputBus).sampleRate;
    return rate > 0 && std::isfinite(rate) ? static_cast<std::int64_t>(rate) : fallbackSampleRate;
}

// Checks neither isRecording_ nor the session number on purpose: a connection that opens late
// starts the capture as well, and the chunks go to whichever client is current.
void AppDelegate::handleConnected(bool isOpen) {
    if (!isOpen) {
        return;
    }
    // Holds the delegate strongly: the delivery thread reads the delegate's client without a check
    // whether the delegate lives. The capture releases the callback when it stops. A capture that
    // could not start releases the callback in its destructor.
    required(audio_).start([self = shared_from_this()](PcmChunk chunk) {
        if (const std::shared_ptr<DeepgramClient> client = self->deepgram_.load()) {
            client->send(std::move(chunk));
        }
    });
}

void AppDelegate::handleTranscript(const std::string& text, bool isFinal) {
    if (!isFinal) {
        return;
    }
    const std::string piece = lastFinalTranscript_.empty() ? text : " " + text;
    lastFinalTranscript_ += piece;
    lastFinalReceived_ = platform_.clock().now();
    // Holds the delegate strongly, so that every piece that has arrived is inserted.
    platform_.mainQueue().async(
        [self = shared_from_this(), piece] { self->insertTranscript(piece); });
}

void AppDelegate::insertTranscript(const std::string& piece) {
    InsertionTarget target{originatingElement_, std::nullopt};
    if (originatingApp_) {
        target.processIdentifier = originatingApp_->processIdentifier();
    }
    insertPiece(piece, target, platform_.accessibility(), platform_.keyboardEvents());
}

platform::AXUIElementRef AppDelegate::currentFocusedAXElement() {
    platform::Accessibility& accessibility = platform_.accessibility();
    platform::AXUIElementRef focused;
    const platform::AXError error = accessibility.copyAttributeValue(
        accessibility.createSystemWide(), platform::axFocusedUIElementAttribute, &focused);
    return error == platform::axErrorSuccess ? focused : nullptr;
}

void AppDelegate::stopRecording() {
    if (!isRecording_) {
        return;
    }
    const std::int64_t generation = sessionGeneration_;
    isRecording_ = false;
    autoStopTimer_.reset();
    updateStatusIcon(false);
    platform_.log().write("TarvikDictate: stopRecording (session=" + std::to_string(generation) +
                          ")");
    recordUsage();
    const std::shared_ptr<DeepgramClient> client = deepgram_.take();
    if (client) {
        endingClients_.push_back(client);
    }
    platform_.mainQueue().asyncAfter(deferredStopDelay,
                                     weakly(*this, [generation, client](AppDelegate& self) {
                                         self.finishStop(generation, client);
                                     }));
}

void AppDelegate::recordUsage() {
    if (!recordingStartTime_) {
        return;
    }
    const Seconds elapsed = platform_.clock().now() - *recordingStartTime_;
    recordingStartTime_.reset();
    const std::optional<CTATier> tier =
        UsageTracker::shared().recordSession(static_cast<std::int64_t>(elapsed.count()));
    if (tier) {
        platform_.mainQueue().asyncAfter(callToActionDelay,
                                         weakly(*this, [tier = *tier](AppDelegate&) {
                                             CTAWindowController::shared().show(tier);
                                         }));
    }
}

void AppDelegate::finishStop(std::int64_t generation,
                             const std::shared_ptr<DeepgramClient>& client) {
    if (sessionGeneration_ == generation) {
        required(audio_).stop();
        platform_.log().write("TarvikDictate: audio.stop (session=" + std::to_string(generation) +
                              ")");
    } else {
        platform_.log().write("TarvikDictate: deferred-stop SKIPPED — session " +
                              std::to_string(generation) + " superseded by " +
                              std::to_string(sessionGeneration_));
    }
    if (client) {
        client->finish(weakly(
            *this, [ended = client.get()](AppDelegate& self) { self.handleStreamEnd(ended); }));
    }
}

void AppDelegate::handleStreamEnd(const DeepgramClient* client) {
    std::erase_if(endingClients_,
                  [client](const auto& ending) { return ending.lock().get() == client; });
    if (!hasEndingStreams()) {
        // The insertions of transcripts that have just arrived wait on the main queue.
        platform_.mainQueue().async(weakly(*this, &AppDelegate::replyToTermination));
    }
}

bool AppDelegate::hasEndingStreams() {
    std::erase_if(endingClients_, [](const auto& ending) { return ending.expired(); });
    return !endingClients_.empty();
}

}  // namespace tarvik
