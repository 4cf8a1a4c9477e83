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

// As the kernel numbers keys.
constexpr std::uint32_t spaceCode = 57;
constexpr std::uint32_t leftAltCode = 56;
constexpr std::uint32_t rightAltCode = 100;
constexpr std::uint32_t leftShiftCode = 42;
constexpr std::uint32_t rightShiftCode = 54;

bool belongsTo(std::uint32_t modifiers, std::uint32_t code) {
    return code == spaceCode || code == leftAltCode || code == rightAltCode ||
           ((modifiers & platform::shiftKeyMask) != 0 &&
            (code == leftShiftCode || code == rightShiftCode));
}

}  // namespace

ShortcutHold::ShortcutHold(FieldEngine& engine, EventLoop& loop, Events events,
                           AskRepetition askRepetition)
    : engine_(engine),
      loop_(loop),
      events_(std::move(events)),
      askRepetition_(std::move(askRepetition)),
      deadline_(loop) {}

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
        end();
    }
    switch (repeats_.handle(number, time)) {
        case RepeatedHold::Report::repeat:
            unclear_.reset();
            isSeen_ = engine_.hasField();
            watchRepeats();
            break;
        case RepeatedHold::Report::press:
            // Of a hold that has not ended, nobody has seen the release.
            end();
            begin(number, modifiers, time);
            break;
        case RepeatedHold::Report::unclear:
            await({number, modifiers, time});
            break;
        case RepeatedHold::Report::late:
            break;
    }
}

void ShortcutHold::begin(HotKeyNumber number, std::uint32_t modifiers, SteadyTime time) {
    events_.onPressed(number);
    modifiers_ = modifiers;
    repetition_ = askRepetition_();
    isSeen_ = false;
    isAccompanied_ = false;
    repeats_.begin(number, time, repetition_);
    engine_.acquire();
    accompanyAlt();
    watchRepeats();
}

void ShortcutHold::await(const Unclear& report) {
    unclear_ = report;
    deadline_.set(report.time + repeats_.decisionTime(), [this] { decide(); });
}

void ShortcutHold::decide() {
    if (const auto press = std::exchange(unclear_, std::nullopt)) {
        end();
        begin(press->number, press->modifiers, press->time);
    }
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
    if (!engine_.hasField()) {
        end();
    } else if (!isSeen_) {
        // Only keys that were up before the engine had the field have gone unseen.
        deadline_.set(unseenTolerance, [this] { end(); });
    }
}

void ShortcutHold::handleKey(const FieldEngine::Key& key) {
    if (!repeats_.number()) {
        return;
    }
    if (key.isUp && belongsTo(modifiers_, key.code)) {
        accompanyAlt();
        repeats_.expectLateReports(loop_.now());
        end();
    } else if (!key.isUp && !key.hasAlt) {
        // Alt went up before the engine had the field.
        end();
    } else {
        isSeen_ = true;
    }
}

void ShortcutHold::handleField() {
    if (!repeats_.number()) {
        return;
    }
    if (engine_.hasField()) {
        accompanyAlt();
    } else if (std::exchange(isSeen_, false)) {
        watchRepeats();
    }
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
        engine_.release();
    }
    return ended;
}

void ShortcutHold::end() {
    if (const auto ended = take()) {
        events_.onReleased(*ended);
    }
}

void ShortcutHold::cancel(HotKeyNumber number) {
    if (repeats_.number() == number) {
        take();
    }
}

}  // namespace tarvik::linuxdesktop
