// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>

#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// How a keyboard repeats a key that is held.
struct KeyRepetition {
    /// From the press to the first repeat.
    std::chrono::milliseconds delay;
    /// Between two repeats.
    std::chrono::milliseconds interval;
};

/// A hold of which the desktop reports the press and each repeat of the key, and the release not
/// always. Tells which reports belong to one hold, and when the repeats are over. Without a clock:
/// the owner tells the time. One thread.
class RepeatedHold {
  public:
    enum class Report {
        /// The key went down. The owner ends the hold that lasts, and begins one.
        press,
        /// The key of the hold has repeated.
        repeat,
        /// A repeat of a hold that has ended.
        late,
        /// The first repeat, or a press after a release that nobody has reported. Another report
        /// within decisionTime() shows a repeat. Without one the owner ends the hold and begins
        /// one that has the time of this report.
        unclear
    };

    /// The desktop has reported the hotkey. `now` is when the report was made, where that is known.
    Report handle(HotKeyNumber number, SteadyTime now);
    /// Without `repetition`, each further report of the hold counts as a repeat.
    void begin(HotKeyNumber number, SteadyTime now,
               std::optional<KeyRepetition> repetition = std::nullopt);
    /// Ends the hold, and returns its hotkey; empty without a hold.
    std::optional<HotKeyNumber> end();

    /// The hold is about to end, and repeats of its key may be reported later. A hold that was
    /// shorter than the delay before the first repeat has none.
    void expectLateReports(SteadyTime now);
    /// The hold is about to end, and reports of its key that were made before `now` may come later.
    void expectEarlierReports(SteadyTime now);
    /// No report that comes from here on belongs to a hold that has ended.
    void expectNoLateReports() { endedNumber_ = 0; }

    /// The hotkey that is held; empty without a hold.
    std::optional<HotKeyNumber> number() const;
    /// How often the key of the hold has repeated.
    int repeats() const { return hold_ ? hold_->repeats : 0; }
    /// The time from a repeat to the end of the hold: `tolerance`, or longer where the reports of
    /// the hold came more slowly.
    SteadyTime::duration timeout(SteadyTime::duration tolerance) const;
    /// How long an unclear report waits for the next one.
    SteadyTime::duration decisionTime() const;
    /// From a press to the first repeat, as holds have shown; empty until one had repeats.
    std::optional<SteadyTime::duration> repeatDelay() const { return repeatDelay_; }

  private:
    struct Hold {
        HotKeyNumber number = 0;
        SteadyTime pressTime;
        std::optional<KeyRepetition> repetition;
        // Of the last report, and the longest time between two repeats.
        SteadyTime reportTime;
        SteadyTime::duration maxGap{0};
        int repeats = 0;
        bool hasUnclearReport = false;
    };

    /// The time between two reported repeats, by the keyboard's setting.
    SteadyTime::duration maxRepeatGap() const;
    Report classify(SteadyTime now);
    void countRepeat(SteadyTime now);

    std::optional<Hold> hold_;
    std::optional<SteadyTime::duration> repeatDelay_;
    // A hold that has ended, of which repeats may be on their way.
    HotKeyNumber endedNumber_ = 0;
    // Each repeat moves this on, up to the limit.
    SteadyTime lateUntil_;
    SteadyTime lateLimit_;
    SteadyTime::duration lateInterval_{0};
};

}  // namespace tarvik::linuxdesktop
