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

}  // namespace

RepeatedHold::Report RepeatedHold::handle(HotKeyNumber number, SteadyTime now) {
    if (hold_ && hold_->number == number) {
        countRepeat(now);
        return Report::repeat;
    }
    if (number == endedNumber_ && now < lateUntil_) {
        lateUntil_ = std::min(now + lateInterval_, lateLimit_);
        return Report::late;
    }
    return Report::press;
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

void RepeatedHold::begin(HotKeyNumber number, SteadyTime now) {
    hold_ = Hold{number, now, now};
}

std::optional<HotKeyNumber> RepeatedHold::end() {
    const auto ended = number();
    hold_.reset();
    return ended;
}

void RepeatedHold::expectLateReports(SteadyTime now) {
    endedNumber_ = number().value_or(0);
    lateInterval_ = timeout(minLateInterval);
    lateUntil_ = now + lateInterval_;
    lateLimit_ = std::max(lateUntil_, now + maxLateTime);
}

std::optional<HotKeyNumber> RepeatedHold::number() const {
    return hold_ ? std::optional(hold_->number) : std::nullopt;
}

SteadyTime::duration RepeatedHold::timeout(SteadyTime::duration tolerance) const {
    return hold_ ? std::max(tolerance, maxMissedRepeats * hold_->maxGap) : tolerance;
}

}  // namespace tarvik::linuxdesktop
