// SPDX-License-Identifier: MIT

#include "platform/linux/input/RepeatedHold.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// A busy machine reports repeats at another pace than the keyboard's.
constexpr int maxMissedRepeats = 3;
// No keyboard repeats more slowly, and nobody presses so fast.
constexpr SteadyTime::duration maxRepeatInterval = 200ms;
constexpr SteadyTime::duration minLateInterval = 250ms;
// After that time the reports are taken for those of a new hold, whose repeats look the same.
constexpr SteadyTime::duration maxLateTime = 1s;
// The first repeat of a machine that is not busy comes within this time of the keyboard's delay.
constexpr SteadyTime::duration repeatJitter = 40ms;
// Nobody presses a combination again so soon: two taps take 0.15 s at least, and their times may be
// known to 0.01 s only. A busy machine may report repeats before the delay has passed, when the
// press itself was reported late or not at all.
constexpr SteadyTime::duration minPressInterval = 130ms;
// A press that is reported late lets the first repeat seem early, by no more than this.
constexpr SteadyTime::duration maxEarlyTime = 200ms;
// What a busy machine adds to the time between two repeats, of a hold that lasts and of one that
// has ended.
constexpr SteadyTime::duration decisionTolerance = 100ms;
constexpr SteadyTime::duration lateTolerance = 50ms;

}  // namespace

RepeatedHold::Report RepeatedHold::handle(HotKeyNumber number, SteadyTime now) {
    if (hold_ && hold_->number == number) {
        const Report report = classify(now);
        if (report == Report::repeat) {
            countRepeat(now);
        }
        return report;
    }
    if (number == endedNumber_ && now < lateUntil_) {
        lateUntil_ = std::max(lateUntil_, std::min(now + lateInterval_, lateLimit_));
        return Report::late;
    }
    return Report::press;
}

// A lone report at the very time of the first repeat is that repeat: the key went up right after.
RepeatedHold::Report RepeatedHold::classify(SteadyTime now) {
    if (!hold_->repetition || hold_->repeats > 0 || hold_->hasUnclearReport) {
        return Report::repeat;
    }
    const SteadyTime::duration gap = now - hold_->pressTime;
    const SteadyTime::duration late = gap - hold_->repetition->delay;
    if (gap < minPressInterval || (late >= -repeatJitter && late <= repeatJitter)) {
        return Report::repeat;
    }
    if (late < -maxEarlyTime) {
        return Report::press;
    }
    hold_->hasUnclearReport = true;
    return Report::unclear;
}

void RepeatedHold::countRepeat(SteadyTime now) {
    const auto gap = now - hold_->reportTime;
    ++hold_->repeats;
    if (hold_->repeats > 1) {
        hold_->maxGap = std::max(hold_->maxGap, gap);
    }
    // A second press after a lost release is no repeat.
    if (hold_->repeats == 2 && gap < maxRepeatInterval) {
        repeatDelay_ = hold_->reportTime - hold_->pressTime;
    }
    hold_->reportTime = now;
}

void RepeatedHold::begin(HotKeyNumber number, SteadyTime now,
                         std::optional<KeyRepetition> repetition) {
    hold_ = Hold{number, now, repetition, now};
}

std::optional<HotKeyNumber> RepeatedHold::end() {
    const auto ended = number();
    hold_.reset();
    return ended;
}

void RepeatedHold::expectLateReports(SteadyTime now) {
    const bool hasNoRepeats = hold_ && hold_->repetition &&
                              now - hold_->pressTime < hold_->repetition->delay - maxEarlyTime;
    expectEarlierReports(now);
    if (hasNoRepeats) {
        return;
    }
    lateInterval_ =
        timeout(hold_ && hold_->repetition ? maxRepeatGap() + lateTolerance : minLateInterval);
    lateUntil_ = now + lateInterval_;
    lateLimit_ = std::max(lateUntil_, now + maxLateTime);
}

void RepeatedHold::expectEarlierReports(SteadyTime now) {
    endedNumber_ = number().value_or(0);
    lateInterval_ = 0ms;
    lateUntil_ = now;
    lateLimit_ = now;
}

std::optional<HotKeyNumber> RepeatedHold::number() const {
    return hold_ ? std::optional(hold_->number) : std::nullopt;
}

SteadyTime::duration RepeatedHold::decisionTime() const {
    return maxRepeatGap() + decisionTolerance;
}

SteadyTime::duration RepeatedHold::maxRepeatGap() const {
    return (maxMissedRepeats + 1) *
           (hold_ && hold_->repetition ? hold_->repetition->interval : 0ms);
}

SteadyTime::duration RepeatedHold::timeout(SteadyTime::duration tolerance) const {
    return hold_ ? std::max(tolerance, maxMissedRepeats * hold_->maxGap) : tolerance;
}

}  // namespace tarvik::linuxdesktop
