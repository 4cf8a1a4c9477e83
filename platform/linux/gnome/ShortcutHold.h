// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/linux/gnome/ReleaseWatch.h"
#include "platform/linux/ibus/FieldEngine.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/RepeatedHold.h"
#include "platform/linux/input/XHoldListener.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// Which custom shortcut of GNOME is held. GNOME reports the press and each repeat, and no release.
/// The engine sees the keys go up while a text field has the keyboard, and the X server while an X
/// program has it. Elsewhere the hold ends with its repeats. On a busy machine GNOME reports a
/// repeat long after the release, so the keys are watched for a while after a release that the
/// engine has seen. Loop thread only; no operation waits.
class ShortcutHold {
  public:
    /// The callbacks do not destroy the object.
    struct Events {
        std::function<void(HotKeyNumber)> onPressed;
        std::function<void(HotKeyNumber)> onReleased;
        /// As XHoldListener::Follow.
        XHoldListener::Follow onHold;
    };
    /// How the keyboard repeats its keys at present; empty when it does not.
    using AskRepetition = std::function<std::optional<KeyRepetition>()>;

    /// The references outlive the object.
    ShortcutHold(FieldEngine& engine, EventLoop& loop, Events events, AskRepetition askRepetition);
    /// Ends the hold.
    ~ShortcutHold();
    ShortcutHold(const ShortcutHold&) = delete;
    ShortcutHold& operator=(const ShortcutHold&) = delete;

    /// GNOME has reported the shortcut with these modifiers of the event manager. `time` is when
    /// GNOME started to do so.
    void handlePress(HotKeyNumber number, std::uint32_t modifiers, SteadyTime time);
    /// The engine has seen a key.
    void handleKey(const FieldEngine::Key& key);
    /// The engine has got or lost a text field.
    void handleField();

    /// Tells of the hold, or that there is none, once more.
    void announce() const;
    /// As in XHoldListener.
    void handleKeysSeenInX(std::uint64_t hold, bool areSeen);
    void handleReleaseInX(std::uint64_t hold);

    /// Ends the hold, if there is one, and watches no keys any more.
    void end();
    /// The same without `onReleased`, if the hold is that of `number`.
    void cancel(HotKeyNumber number);

  private:
    // A report that is a repeat or a press.
    struct Unclear {
        HotKeyNumber number = 0;
        std::uint32_t modifiers = 0;
        SteadyTime time;
    };

    void begin(const Unclear& press);
    void handleNew(const Unclear& report);
    void await(const Unclear& report);
    void decide();
    void watchRepeats();
    void handleSilence();
    void accompanyAlt();
    bool areKeysSeen() const { return engine_.hasField() || areSeenInX_; }
    bool wouldBeSeen(const Unclear& press) const;
    void noteSight();
    void endWatched(const FieldEngine::Key& key);
    void finish();
    std::optional<HotKeyNumber> take();

    FieldEngine& engine_;
    EventLoop& loop_;
    const Events events_;
    const AskRepetition askRepetition_;
    RepeatedHold repeats_;
    std::optional<Unclear> unclear_;
    // Since when the keys are seen, in a field or in an X program.
    std::optional<SteadyTime> seenTime_;
    // Grows with each hold.
    std::uint64_t holdNumber_ = 0;
    // From here on of the hold.
    std::uint32_t modifiers_ = 0;
    std::optional<KeyRepetition> repetition_;
    // The engine has a field, and a key was down after the engine got the field. So the engine will
    // see the key go up.
    bool isSeen_ = false;
    // The X server will tell when one of the keys goes up.
    bool areSeenInX_ = false;
    // A tap of Ctrl has accompanied Alt.
    bool isAccompanied_ = false;
    Deadline deadline_;
    // From here on after a hold.
    ReleaseWatch watch_;
    // A report without Alt: a late repeat, or a press whose Alt the engine is about to see.
    std::optional<Unclear> withoutAlt_;
    Deadline altDeadline_;
};

}  // namespace tarvik::linuxdesktop
