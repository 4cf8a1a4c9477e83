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

// Where the space bar is on practically every keyboard.
constexpr xcb_keycode_t usualSpaceKey = 65;

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
    const auto wanted = grabFor(modifiers);
    if (!wanted) {
        return platform::eventHotKeyInvalidErr;
    }
    if (!wanted->make(connection_)) {
        wanted->drop(connection_);
        return connection_.isBroken() ? platform::eventInternalErr : platform::eventHotKeyExistsErr;
    }
    hotKeys_[number] = {modifiers, wanted};
    // A window manager may still have to handle an earlier change.
    renewGrabs();
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
    followLifted();
}

std::optional<KeyGrab> HotKeys::grabFor(std::uint32_t modifiers) const {
    KeyGrab grab;
    const auto key = keyboard_.keyOfSymbol(XKB_KEY_space, usualSpaceKey);
    if (!key) {
        return std::nullopt;
    }
    grab.key = *key;
    grab.locks = static_cast<std::uint8_t>(XCB_MOD_MASK_LOCK | keyboard_.numLockMask());
    if ((modifiers & platform::optionKeyMask) != 0) {
        const std::uint8_t alt = keyboard_.modifierMask({XKB_KEY_Alt_L, XKB_KEY_Alt_R});
        if (alt == 0) {
            return std::nullopt;
        }
        grab.modifiers = alt;
    }
    if ((modifiers & platform::shiftKeyMask) != 0) {
        grab.modifiers |= XCB_MOD_MASK_SHIFT;
    }
    return grab;
}

bool HotKeys::handlePress(const xcb_input_key_press_event_t& event) {
    if (event.sourceid != event.deviceid) {
        keyboardInUse_ = event.sourceid;
    }
    if ((event.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0) {
        // The repeat of a held key is no press: it would switch a long dictation on and off, and
        // ask for a missing key anew. A key that stays down after its combination has ended repeats
        // too.
        const bool isHeld = hold_ && hold_->key == event.detail;
        answerPress(connection_, isHeld ? PressAnswer::ours : PressAnswer::notOurs);
        return false;
    }
    const std::uint32_t seen = event.mods.effective;
    for (const std::uint32_t held : {seen | lifted_.mask(), seen}) {
        for (const auto& [number, hotKey] : hotKeys_) {
            const auto& grab = hotKey.grab;
            if (grab && grab->key == event.detail &&
                (held & ~std::uint32_t{grab->locks}) == grab->modifiers) {
                answerPress(connection_, PressAnswer::ours);
                endHold();
                hold_ = Hold{number, grab->key, keyboard_.modifierKeys(grab->modifiers)};
                events_.onPressed(number);
                return true;
            }
        }
    }
    answerPress(connection_, PressAnswer::notOurs);
    return false;
}

void HotKeys::handleRelease(std::uint32_t keyCode, std::uint32_t sequence) {
    const auto key = static_cast<xcb_keycode_t>(keyCode);
    if (ownReleases_.erase({key, sequence}) != 0) {
        return;
    }
    if (lifted_.remove(key)) {
        followLifted();
    }
    if (hold_ && (key == hold_->key ||
                  std::ranges::find(hold_->modifierKeys, key) != hold_->modifierKeys.end())) {
        endHold();
    }
}

void HotKeys::endHold() {
    if (hold_) {
        const HotKeyNumber number = hold_->number;
        hold_.reset();
        selectRawReleases();
        events_.onReleased(number);
    }
}

void HotKeys::renewGrabs() {
    renewalsDone_ = 0;
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
    }
}

void HotKeys::renew() {
    keyboard_.refresh();
    for (auto& [number, hotKey] : hotKeys_) {
        const auto wanted = grabFor(hotKey.modifiers);
        if (hotKey.grab && hotKey.grab != wanted) {
            hotKey.grab->drop(connection_);
        }
        const bool isGrabbed = wanted && wanted->make(connection_);
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
}

void HotKeys::handleKeyboardRemoved() {
    lifted_.clear();
    followLifted();
}

void HotKeys::beginTyping() {
    isTyping_ = true;
    followLifted();
}

void HotKeys::endTyping() {
    isTyping_ = false;
    followLifted();
}

void HotKeys::handleGrabLost() {
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
    selectRawReleases();
}

// Raw events tell of every key that the user presses anywhere. They are selected only while a key
// may go up whose release no other event tells.
void HotKeys::selectRawReleases() {
    const bool wanted = isTyping_ || !lifted_.isEmpty() || (hold_ && hold_->hasLostGrab);
    if (wanted == std::exchange(hearsRawReleases_, wanted)) {
        return;
    }
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           wanted ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0U};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &mask.head);
    if (!wanted) {
        ownReleases_.clear();
    }
}

void HotKeys::endIfReleased() {
    if (!hold_) {
        return;
    }
    const XcbReply<xcb_query_keymap_reply_t> reply(
        xcb_query_keymap_reply(connection_.get(), xcb_query_keymap(connection_.get()), nullptr));
    if (!reply || (reply->keys[hold_->key / 8] >> (hold_->key % 8) & 1) == 0) {
        endHold();
    }
}

}  // namespace tarvik::linuxdesktop
