// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/ShortcutHold.h"

#include <utility>

#include "platform/EventManager.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// How much later than the keyboard's settings say a repeat may be reported. An end too early costs
// words, and one too late costs silence.
constexpr auto firstRepeatTolerance = 500ms;
constexpr auto repeatTolerance = 150ms;
constexpr int maxMissedRepeats = 4;
constexpr auto unseenTolerance = 2s;
// How much later than the press of the hotkey the engine may see the Alt of that press.
constexpr auto altTolerance = 200ms;

// As the kernel numbers keys.
constexpr std::uint32_t spaceCode = 57;
constexpr std::uint32_t leftShiftCode = 42;
constexpr std::uint32_t rightShiftCode = 54;

bool belongsTo(std::uint32_t modifiers, const FieldEngine::Key& key) {
    return key.code == spaceCode || key.isAlt() ||
           ((modifiers & platform::shiftKeyMask) != 0 &&
            (key.code == leftShiftCode || key.code == rightShiftCode));
}

}  // namespace

ShortcutHold::ShortcutHold(FieldEngine& engine, EventLoop& loop, Events events,
                           AskRepetition askRepetition)
    : engine_(engine),
      loop_(loop),
      events_(std::move(events)),
      askRepetition_(std::move(askRepetition)),
      deadline_(loop),
      watch_(engine, loop),
      altDeadline_(loop) {}

ShortcutHold::~ShortcutHold() {
    end();
}

void ShortcutHold::handlePress(HotKeyNumber number, std::uint32_t modifiers, SteadyTime time) {
    // The report may overtake the deadline of the one before.
    if (unclear_ && time >= unclear_->time + repeats_.decisionTime()) {
        decide();
    }
    // A key that does not repeat has been pressed again.
    if (!repetition_) {
        finish();
    }
    switch (repeats_.handle(number, time)) {
        case RepeatedHold::Report::repeat:
            unclear_.reset();
            isSeen_ = engine_.hasField();
            watchRepeats();
            break;
        case RepeatedHold::Report::press:
            handleNew({number, modifiers, time});
            break;
        case RepeatedHold::Report::unclear:
            await({number, modifiers, time});
            break;
        case RepeatedHold::Report::late:
            watch_.extend();
            break;
    }
}

void ShortcutHold::handleNew(const Unclear& report) {
    const bool isHeld = repeats_.number() == report.number;
    if (watch_.isAltUp() || (isHeld && wouldBeSeen(report))) {
        withoutAlt_ = report;
        altDeadline_.set(altTolerance, [this] { withoutAlt_.reset(); });
        watch_.extend();
        return;
    }
    // Of a hold that has not ended, nobody has seen the release.
    if (repeats_.number()) {
        repeats_.expectEarlierReports(report.time);
        finish();
    }
    begin(report);
}

void ShortcutHold::begin(const Unclear& press) {
    events_.onPressed(press.number);
    modifiers_ = press.modifiers;
    repetition_ = askRepetition_();
    isSeen_ = false;
    areSeenInX_ = false;
    isAccompanied_ = false;
    ++holdNumber_;
    repeats_.begin(press.number, press.time, repetition_);
    engine_.acquire();
    watch_.end();
    withoutAlt_.reset();
    noteSight();
    accompanyAlt();
    watchRepeats();
    announce();
}

void ShortcutHold::await(const Unclear& report) {
    unclear_ = report;
    deadline_.set(report.time + repeats_.decisionTime(), [this] { decide(); });
}

void ShortcutHold::decide() {
    const auto press = std::exchange(unclear_, std::nullopt);
    if (press && wouldBeSeen(*press)) {
        watchRepeats();
    } else if (press) {
        finish();
        begin(*press);
    }
}

// A press after a release of Alt. The user may also hold Alt, and press the space bar again.
bool ShortcutHold::wouldBeSeen(const Unclear& press) const {
    return seenTime_ && press.time >= *seenTime_ + altTolerance;
}

void ShortcutHold::watchRepeats() {
    if (!repeats_.number() || !repetition_ || unclear_) {
        return;
    }
    const SteadyTime::duration timeout =
        repeats_.repeats() == 0
            ? repetition_->delay + firstRepeatTolerance
            : repeats_.timeout(maxMissedRepeats * repetition_->interval + repeatTolerance);
    deadline_.set(loop_.now() + timeout, [this] { handleSilence(); });
}

void ShortcutHold::handleSilence() {
    if (areSeenInX_) {
        return;
    }
    if (!engine_.hasField()) {
        // The only report may have been followed by another press.
        if (repeats_.repeats() > 0) {
            repeats_.expectEarlierReports(loop_.now());
        }
        finish();
    } else if (!isSeen_) {
        // Only keys that were up before the engine had the field have gone unseen.
        deadline_.set(unseenTolerance, [this] { finish(); });
    }
}

void ShortcutHold::handleKey(const FieldEngine::Key& key) {
    const bool isNewAlt = !key.isUp && !key.hasAlt && key.isAlt();
    const std::optional<Unclear> press =
        isNewAlt ? (unclear_ ? unclear_ : withoutAlt_) : std::nullopt;
    if (!repeats_.number()) {
        watch_.noteKey(key);
    } else if (key.isUp && belongsTo(modifiers_, key)) {
        accompanyAlt();
        if (repetition_) {
            repeats_.expectLateReports(loop_.now());
        }
        endWatched(key);
    } else if (!key.isUp && !key.hasAlt) {
        // Alt went up before the engine had the field. The key may be the Alt of the next press,
        // whose command may have begun already.
        repeats_.expectNoLateReports();
        endWatched(key);
    } else {
        isSeen_ = true;
    }
    if (press) {
        begin(*press);
    }
}

void ShortcutHold::noteSight() {
    if (!areKeysSeen()) {
        seenTime_.reset();
        watch_.noteUnseen();
    } else if (!seenTime_) {
        seenTime_ = loop_.now();
    }
}

void ShortcutHold::handleField() {
    noteSight();
    if (!repeats_.number()) {
        return;
    }
    if (engine_.hasField()) {
        accompanyAlt();
    } else if (std::exchange(isSeen_, false)) {
        watchRepeats();
    }
}

void ShortcutHold::announce() const {
    events_.onHold(repeats_.number() ? std::optional(holdNumber_) : std::nullopt);
}

void ShortcutHold::handleKeysSeenInX(std::uint64_t hold, bool areSeen) {
    if (!repeats_.number() || hold != holdNumber_) {
        return;
    }
    areSeenInX_ = areSeen;
    noteSight();
    watchRepeats();
}

// The keys of a hold that were not seen have gone up before anybody looked. A key that goes up
// later is that of the next press, which GNOME may have reported or not.
void ShortcutHold::handleReleaseInX(std::uint64_t hold) {
    if (!repeats_.number() || hold != holdNumber_) {
        return;
    }
    if (!areSeenInX_ && repeats_.repeats() == 0) {
        const auto press = std::exchange(unclear_, std::nullopt);
        repeats_.expectNoLateReports();
        finish();
        if (!press) {
            return;
        }
        begin(*press);
    }
    if (repetition_) {
        repeats_.expectLateReports(loop_.now());
    }
    finish();
}

void ShortcutHold::accompanyAlt() {
    if (engine_.hasField() && !std::exchange(isAccompanied_, true)) {
        engine_.tapControl();
    }
}

std::optional<HotKeyNumber> ShortcutHold::take() {
    deadline_.clear();
    unclear_.reset();
    const auto ended = repeats_.end();
    if (ended) {
        areSeenInX_ = false;
        engine_.release();
        announce();
    }
    return ended;
}

void ShortcutHold::endWatched(const FieldEngine::Key& key) {
    if (repetition_) {
        watch_.begin(key);
    }
    finish();
}

void ShortcutHold::finish() {
    if (const auto ended = take()) {
        events_.onReleased(*ended);
    }
}

void ShortcutHold::end() {
    finish();
    watch_.end();
    withoutAlt_.reset();
}

void ShortcutHold::cancel(HotKeyNumber number) {
    if (repeats_.number() == number) {
        take();
    }
}

}  // namespace tarvik::linuxdesktop
