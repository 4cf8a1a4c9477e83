// SPDX-License-Identifier: MIT

#include "platform/linux/x11/HotKeys.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/linux/x11/FakeKeyboard.h"
#include "platform/linux/x11/ServerGrab.h"

namespace tarvik::linuxdesktop {

HotKeys::HotKeys(XcbConnection& connection, Keyboard& keyboard, Events events)
    : connection_(connection),
      keyboard_(keyboard),
      events_(std::move(events)),
      lifted_(connection, keyboard) {}

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
    followLifted();
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

bool HotKeys::isOfMaster(const xcb_input_key_press_event_t& event) const {
    return event.deviceid == connection_.keyboard();
}

void HotKeys::handlePress(const xcb_input_key_press_event_t& event) {
    if (event.sourceid != connection_.keyboard()) {
        keyboardInUse_ = event.sourceid;
    }
    const auto key = static_cast<xcb_keycode_t>(event.detail);
    if ((event.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0) {
        // The repeat of a held key is no press: it would switch a long dictation on and off, and
        // ask for a missing key anew. A key that stays down after its combination has ended repeats
        // too.
        giveBack(event);
        return;
    }
    const std::uint32_t seen = event.mods.effective;
    auto number = hotKeyOf(key, seen | lifted_.mask());
    if (!number) {
        number = hotKeyOf(key, seen);
    }
    if (number) {
        endHold();
        beginHold(*number, event);
    } else if (isOfMaster(event)) {
        answerPress(connection_, PressAnswer::notOurs);
    } else {
        passPressOn(event);
    }
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

// The raw events are selected before the keyboard is given back, so that no release goes unheard.
void HotKeys::beginHold(HotKeyNumber number, const xcb_input_key_press_event_t& event) {
    const KeyGrab& grab = *hotKeys_[number].grab;
    hold_ = Hold{number, grab.key, keyboard_.modifierKeys(grab.modifiers), event.sourceid};
    selectRawEvents();
    giveBack(event);
    if (!isOfMaster(event)) {
        hideModifiers(event.sourceid);
    }
    events_.onPressed(number);
}

// The server detaches a keyboard from the master while the keyboard is grabbed. The master would
// miss the release of Alt.
void HotKeys::giveBack(const xcb_input_key_press_event_t& event) {
    if (!isOfMaster(event)) {
        xcb_input_xi_ungrab_device(connection_.get(), XCB_CURRENT_TIME, event.deviceid);
        return;
    }
    const bool isHeld = hold_ && hold_->key == event.detail;
    answerPress(connection_, isHeld ? PressAnswer::ours : PressAnswer::notOurs);
}

// The program in front sees the modifiers, and not the key. Alt that goes down and up alone moves
// the keyboard to the menu bar of many programs, so the programs get a key that types nothing. A
// modifier that typing has lifted was up already for the program in front.
void HotKeys::hideModifiers(std::uint16_t keyboard) {
    const auto key = keyboard_.silentKey();
    if (key && lifted_.isEmpty()) {
        FakeKeyboard fake(connection_, keyboard);
        fake.press(*key);
        fake.release(*key);
    }
}

void HotKeys::accompanyModifiers() {
    keyboard_.refresh();
    hideModifiers(connection_.xwaylandKeyboard());
}

// A key of somebody else, which came while the keyboard was this client's. The master has seen
// neither the press nor a release that has followed. For the keyboard the key has to move back
// first. Nobody moves the key while the server listens to this client alone.
void HotKeys::passPressOn(const xcb_input_key_press_event_t& event) {
    const auto key = static_cast<xcb_keycode_t>(event.detail);
    const ServerGrab grab(connection_);
    giveBack(event);
    FakeKeyboard fake(connection_, event.sourceid);
    if (fake.keysDown()[key]) {
        fake.release(key);
        fake.press(key);
    } else {
        fake.press(key);
        fake.release(key);
    }
}

// The user may have pressed the key again, and holds it.
void HotKeys::passReleaseOn(const xcb_input_key_release_event_t& event) {
    const auto key = static_cast<xcb_keycode_t>(event.detail);
    const ServerGrab grab(connection_);
    FakeKeyboard fake(connection_, event.sourceid);
    const bool isDownForMaster = keysDown(connection_, xcb_query_keymap(connection_.get()))[key];
    if (isDownForMaster && !fake.keysDown()[key]) {
        fake.press(key);
        fake.release(key);
    }
}

void HotKeys::handleRelease(std::uint32_t keyCode, std::uint32_t sequence) {
    const auto key = static_cast<xcb_keycode_t>(keyCode);
    if (ownReleases_.erase({key, sequence}) != 0) {
        return;
    }
    if (lifted_.remove(key)) {
        followLifted();
    }
    // An earlier release may be one of typing.
    if (observed_.keys[key] && static_cast<std::int32_t>(sequence - observed_.sequence) >= 0) {
        observed_.onRelease();
    }
    if (hold_ && (key == hold_->key ||
                  std::ranges::find(hold_->modifierKeys, key) != hold_->modifierKeys.end())) {
        endHold();
    }
}

void HotKeys::handleGrabbedRelease(const xcb_input_key_release_event_t& event) {
    handleRelease(event.detail, event.full_sequence);
    if (!isOfMaster(event)) {
        passReleaseOn(event);
    }
}

void HotKeys::endHold() {
    if (hold_) {
        const Hold ended = *std::exchange(hold_, std::nullopt);
        selectRawEvents();
        events_.onReleased(ended.number);
    }
}

void HotKeys::handleMapChange() {
    keyboard_.refresh();
    for (auto& [number, hotKey] : hotKeys_) {
        const auto wanted = spaceBarGrab(keyboard_, hotKey.modifiers);
        if (wanted && wanted == hotKey.grab) {
            continue;
        }
        const bool isGrabbed = wanted && wanted->make(connection_);
        if (hotKey.grab) {
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
}

void HotKeys::handleKeyboardRemoved() {
    lifted_.clear();
    endIfReleased();
    followLifted();
}

void HotKeys::endIfReleased() {
    if (hold_ && !FakeKeyboard(connection_, hold_->keyboard).keysDown()[hold_->key]) {
        endHold();
    }
}

void HotKeys::beginTyping() {
    isTyping_ = true;
    followLifted();
}

void HotKeys::endTyping() {
    isTyping_ = false;
    followLifted();
}

void HotKeys::expectRelease(xcb_keycode_t key, std::uint32_t sequence) {
    ownReleases_.insert({key, sequence});
    lifted_.add(key);
}

void HotKeys::observeReleases(const KeysDown& keys, std::function<void()> onRelease) {
    observed_ = {keys, std::move(onRelease), xcb_no_operation(connection_.get()).sequence};
    selectRawEvents();
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

// Raw events tell of every key, and each is a wake-up. So they are selected only while a release
// matters.
void HotKeys::selectRawEvents() {
    const bool hasReleases = hold_ || observed_.keys.any() || isTyping_ || !lifted_.isEmpty();
    if (!hasReleases) {
        ownReleases_.clear();
    }
    if (hasReleases == std::exchange(hearsReleases_, hasReleases)) {
        return;
    }
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           hasReleases ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0U};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &mask.head);
}

}  // namespace tarvik::linuxdesktop
