// SPDX-License-Identifier: MIT

#include "platform/linux/x11/HotKeys.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// Of two grabs the newest is served. An idle window manager grabs again within a few milliseconds
// after a change of the map. A busy one may take longer, and some do not tell when they have. The
// change may come with the very Alt that the user presses for the hotkey, so the grabs are renewed
// after each of these delays.
constexpr std::array renewalDelays{5ms, 20ms, 60ms, 200ms, 600ms};

}  // namespace

HotKeys::HotKeys(XcbConnection& connection, Keyboard& keyboard, PollLoop& loop, Events events)
    : connection_(connection),
      keyboard_(keyboard),
      events_(std::move(events)),
      lifted_(connection, keyboard),
      rawKeys_(connection),
      grabWatch_(connection),
      holdGrab_(connection, loop),
      windowManagerFence_(connection),
      renewal_(loop) {}

HotKeys::~HotKeys() {
    endHold();
}

platform::OSStatus HotKeys::add(HotKeyNumber number, std::uint32_t keyCode,
                                std::uint32_t modifiers) {
    constexpr std::uint32_t known = platform::optionKeyMask | platform::shiftKeyMask;
    if (keyCode != platform::spaceKeyCode || (modifiers & ~known) != 0) {
        return platform::eventHotKeyInvalidErr;
    }
    for (const auto& [other, hotKey] : hotKeys_) {
        if (hotKey.modifiers == modifiers) {
            return platform::eventHotKeyExistsErr;
        }
    }
    keyboard_.refresh();
    const auto wanted = spaceBarGrab(keyboard_, modifiers);
    if (!wanted) {
        return platform::eventHotKeyInvalidErr;
    }
    if (!wanted->make(connection_)) {
        wanted->drop(connection_);
        return connection_.isBroken() ? platform::eventInternalErr : platform::eventHotKeyExistsErr;
    }
    hotKeys_[number] = {modifiers, wanted};
    // A window manager may still have to handle an earlier change.
    beginRenewals();
    return platform::noErr;
}

void HotKeys::remove(HotKeyNumber number) {
    const auto found = hotKeys_.find(number);
    if (found == hotKeys_.end()) {
        return;
    }
    if (found->second.grab) {
        found->second.grab->drop(connection_);
    }
    hotKeys_.erase(found);
    if (hold_ && hold_->number == number) {
        hold_.reset();
    }
    // Another hotkey's hold goes on, and with it the grab that tells its end.
    if (!hold_) {
        holdGrab_.drop();
    }
    followLifted();
}

void HotKeys::handlePress(const xcb_input_key_press_event_t& event) {
    if (event.sourceid != event.deviceid) {
        keyboardInUse_ = event.sourceid;
    }
    const auto key = static_cast<xcb_keycode_t>(event.detail);
    if ((event.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0) {
        // The repeat of a held key is no press: it would switch a long dictation on and off, and
        // ask for a missing key anew. A key that stays down after its combination has ended repeats
        // too.
        const bool isHeld = hold_ && hold_->key == key;
        if (holdGrab_.isHeld()) {
            holdGrab_.goOn(!hold_);
        } else {
            answerPress(connection_, isHeld ? PressAnswer::ours : PressAnswer::notOurs);
        }
        return;
    }
    rawKeys_.press(key);
    isGrabbed_ = false;
    if (confirm(event)) {
        selectRawEvents();
        keepKeyboard(*hold_);
        return;
    }
    selectRawEvents();
    const std::uint32_t seen = event.mods.effective;
    auto number = hotKeyOf(key, seen | lifted_.mask());
    if (!number) {
        number = hotKeyOf(key, seen);
    }
    if (number) {
        endHold();
        beginHold(*number, std::nullopt);
    } else if (!holdGrab_.isHeld()) {
        answerPress(connection_, PressAnswer::notOurs);
    } else if (hold_ || holdGrab_.contains(key)) {
        holdGrab_.goOn(!hold_);
    } else {
        holdGrab_.replay();
    }
}

// A modifier that typing has lifted was up already for the program in front.
void HotKeys::keepKeyboard(const Hold& hold) {
    if (!lifted_.isEmpty()) {
        answerPress(connection_, PressAnswer::ours);
        return;
    }
    std::vector<xcb_keycode_t> keys = hold.modifierKeys;
    keys.push_back(hold.key);
    ownRequests_.begin(holdGrab_.take(std::move(keys)));
}

std::optional<HotKeyNumber> HotKeys::hotKeyOf(xcb_keycode_t key, std::uint32_t modifiers) const {
    for (const auto& [number, hotKey] : hotKeys_) {
        const auto& grab = hotKey.grab;
        if (grab && grab->key == key &&
            (modifiers & ~std::uint32_t{grab->locks}) == grab->modifiers) {
            return number;
        }
    }
    return std::nullopt;
}

void HotKeys::beginHold(HotKeyNumber number, std::optional<Unconfirmed> unconfirmed) {
    const KeyGrab& grab = *hotKeys_[number].grab;
    hold_ = Hold{number, grab.key, keyboard_.modifierKeys(grab.modifiers), unconfirmed.has_value(),
                 unconfirmed};
    reportedKey_ = grab.key;
    selectRawEvents();
    if (!unconfirmed) {
        keepKeyboard(*hold_);
    }
    events_.onPressed(number);
}

// The raw event of a press comes right before the press itself, and has the same time.
bool HotKeys::confirm(const xcb_input_key_press_event_t& event) {
    if (!hold_ || !hold_->unconfirmed || hold_->key != event.detail) {
        return false;
    }
    const Unconfirmed& heard = *hold_->unconfirmed;
    const bool isLater = SequenceRanges::isAfter(event.full_sequence, heard.readSequence);
    if (heard.time ? heard.time != event.time : isLater) {
        return false;
    }
    hold_->unconfirmed.reset();
    hold_->hasLostGrab = false;
    return true;
}

void HotKeys::handleRawPress(const xcb_input_raw_key_press_event_t& event) {
    const auto key = static_cast<xcb_keycode_t>(event.detail);
    if (ownRequests_.contains(event.full_sequence) || !rawKeys_.press(key)) {
        return;
    }
    const auto number = hotKeyOf(key, rawKeys_.modifiers(keyboard_) | lifted_.mask());
    if (number) {
        keyboardInUse_ = event.sourceid;
        endHold();
        beginHold(*number, Unconfirmed{event.time});
    } else if (isGrabbed_ && !isRenewing_ && !hold_ && !holdGrab_.isHeld() &&
               !grabWatch_.isTakenByOther()) {
        // The end of the grab went unheard.
        isGrabbed_ = false;
        selectRawEvents();
    }
}

// Of a press that came before the raw events were selected, only the state of the keys tells.
void HotKeys::hearUngrabbedPresses() {
    if (!selectRawEvents() || hold_) {
        return;
    }
    const std::uint32_t held = rawKeys_.modifiers(keyboard_) | lifted_.mask();
    for (const auto& [number, hotKey] : hotKeys_) {
        const auto& grab = hotKey.grab;
        if (grab && rawKeys_.isDown(grab->key) && grab->key != reportedKey_ &&
            hotKeyOf(grab->key, held) == number) {
            beginHold(number, Unconfirmed{std::nullopt, rawKeys_.readSequence()});
            return;
        }
    }
}

void HotKeys::handleGrab(GrabWatch::Change change, std::uint32_t sequence) {
    if (change == GrabWatch::Change::none || ownRequests_.contains(sequence)) {
        return;
    }
    isGrabbed_ = change == GrabWatch::Change::begun;
    hearUngrabbedPresses();
}

void HotKeys::handleGrabByOther() {
    isGrabbed_ = true;
    hearUngrabbedPresses();
}

void HotKeys::followFront(xcb_window_t front) {
    grabWatch_.follow(front);
}

void HotKeys::handleRelease(std::uint32_t keyCode, std::uint32_t sequence) {
    const auto key = static_cast<xcb_keycode_t>(keyCode);
    if (ownReleases_.erase({key, sequence}) != 0) {
        return;
    }
    rawKeys_.release(key);
    if (key == reportedKey_) {
        reportedKey_ = 0;
    }
    if (lifted_.remove(key)) {
        followLifted();
    }
    if (hold_ && (key == hold_->key ||
                  std::ranges::find(hold_->modifierKeys, key) != hold_->modifierKeys.end())) {
        endHold();
    }
    holdGrab_.endIfUp(!hold_);
}

void HotKeys::handleGrabbedRelease(const xcb_input_key_release_event_t& event) {
    handleRelease(event.detail, event.full_sequence);
    holdGrab_.goOn(!hold_);
}

void HotKeys::endHold() {
    if (hold_) {
        const Hold ended = *std::exchange(hold_, std::nullopt);
        selectRawEvents();
        events_.onReleased(ended.number);
        if (ended.unconfirmed) {
            // Another client has got the press, perhaps because its grab is newer.
            beginRenewals();
        }
    }
}

void HotKeys::renewGrabs() {
    beginRenewals();
    hearUngrabbedPresses();
}

void HotKeys::beginRenewals() {
    renewalsDone_ = 0;
    isRenewing_ = true;
    scheduleRenewal(0ms);
    windowManagerFence_.request();
}

void HotKeys::handleProperty(const xcb_property_notify_event_t& event) {
    if (windowManagerFence_.isAnswer(event)) {
        renew();
    }
}

void HotKeys::scheduleRenewal(std::chrono::milliseconds passed) {
    if (renewalsDone_ < renewalDelays.size() && !hotKeys_.empty()) {
        const auto delay = renewalDelays[renewalsDone_++];
        renewal_.set(delay - passed, [this, delay] {
            renew();
            scheduleRenewal(delay);
        });
    } else {
        isRenewing_ = false;
        selectRawEvents();
    }
}

void HotKeys::renew() {
    // Reading the map takes a while.
    for (const auto& [number, hotKey] : hotKeys_) {
        if (hotKey.grab) {
            hotKey.grab->raise(connection_);
        }
    }
    keyboard_.refresh();
    for (auto& [number, hotKey] : hotKeys_) {
        const auto wanted = spaceBarGrab(keyboard_, hotKey.modifiers);
        const bool isGrabbed = wanted && wanted->make(connection_);
        if (hotKey.grab && hotKey.grab != wanted) {
            hotKey.grab->drop(connection_, isGrabbed ? wanted : std::nullopt);
        }
        if (wanted && !isGrabbed) {
            wanted->drop(connection_);
        }
        if (hotKey.grab && !isGrabbed && !connection_.isBroken()) {
            events_.onLost(
                number, wanted ? "another program has taken it" : "the keyboard has no such key");
        }
        hotKey.grab = isGrabbed ? wanted : std::nullopt;
    }
    followLifted();
    endIfReleased();
    holdGrab_.endIfUp(!hold_);
}

void HotKeys::handleKeyboardRemoved() {
    lifted_.clear();
    rawKeys_.reread();
    holdGrab_.endIfUp(!hold_);
    followLifted();
}

void HotKeys::beginTyping() {
    isTyping_ = true;
    ownRequests_.begin(xcb_no_operation(connection_.get()).sequence);
    followLifted();
}

void HotKeys::endTyping() {
    isTyping_ = false;
    ownRequests_.end(xcb_no_operation(connection_.get()).sequence);
    followLifted();
}

void HotKeys::handleGrabLost() {
    holdGrab_.forget();
    if (hold_) {
        hold_->hasLostGrab = true;
    }
}

void HotKeys::expectRelease(xcb_keycode_t key, std::uint32_t sequence) {
    ownReleases_.insert({key, sequence});
    lifted_.add(key);
}

void HotKeys::followLifted() {
    std::vector<KeyGrab> grabs;
    for (const auto& [number, hotKey] : hotKeys_) {
        if (hotKey.grab && !isTyping_) {
            grabs.push_back(*hotKey.grab);
        }
    }
    lifted_.grabFor(grabs);
    selectRawEvents();
}

// Raw events are selected only while a key may go down or up of which no other event tells.
bool HotKeys::selectRawEvents() {
    const bool hasPresses = !hotKeys_.empty() && (isGrabbed_ || isRenewing_);
    const bool hasReleases =
        hasPresses || isTyping_ || !lifted_.isEmpty() || (hold_ && hold_->hasLostGrab);
    const bool begins = rawKeys_.select(hasPresses, hasReleases);
    if (!hasReleases) {
        ownReleases_.clear();
    }
    return begins;
}

void HotKeys::endIfReleased() {
    if (hold_ && !keysDown(connection_, xcb_query_keymap(connection_.get()))[hold_->key]) {
        endHold();
    }
}

}  // namespace tarvik::linuxdesktop
