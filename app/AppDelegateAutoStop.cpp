// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"
#include "base/Weakly.h"

namespace tarvik {

namespace {

constexpr Seconds checkInterval{5.0};
constexpr Seconds hardCap{600.0};
constexpr std::int64_t silenceThresholdSeconds = 30;
constexpr Seconds silenceThreshold{silenceThresholdSeconds};

std::string wholeSeconds(Seconds interval) {
    return std::to_string(static_cast<std::int64_t>(interval.count()));
}

}  // namespace

void AppDelegate::startAutoStopTimer() {
    autoStopTimer_.reset();
    autoStopTimer_ = platform_.timers().scheduledRepeatingTimer(
        checkInterval, weakly(*this, &AppDelegate::checkAutoStop));
}

void AppDelegate::checkAutoStop() {
    if (!isRecording_) {
        autoStopTimer_.reset();
        return;
    }
    const TimePoint now = platform_.clock().now();
    if (recordingStartTime_) {
        const Seconds elapsed = now - *recordingStartTime_;
        if (elapsed > hardCap) {
            platform_.log().write("TarvikDictate: auto-stop (10-min hard cap reached, elapsed=" +
                                  wholeSeconds(elapsed) + "s)");
            stopRecording();
            return;
        }
    }
    if (!lastFinalReceived_) {
        return;
    }
    const Seconds silence = now - *lastFinalReceived_;
    if (silence > silenceThreshold) {
        platform_.log().write("TarvikDictate: auto-stop (silence " + wholeSeconds(silence) +
                              "s > threshold " + std::to_string(silenceThresholdSeconds) + "s)");
        stopRecording();
    }
}

}  // namespace tarvik
