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

// Of two grabs the newest is served. Window managers grab again within a few milliseconds after a
// change of the map when they are idle; a busy one may take longer. The change may come with the
// very Alt that the user presses for the hotkey, so each of these moments after it counts.
constexpr std::array renewals{5ms, 20ms, 60ms, 200ms, 600ms};

std::vector<std::uint32_t> variants(std::uint8_t modifiers, std::uint8_t locks) {
    std::vector<std::uint32_t> all;
    for (unsigned subset = locks;; subset = (subset - 1) & locks) {
        all.push_back(modifiers | subset);
        if (subset == 0) {
            return all;
        }
    }
}

}  // namespace

HotKeys::HotKeys(XcbConnection& connection, Keyboard& keyboard, InputLoop& loop, platform::Log& log,
                 Listener listener)
    : connection_(connection),
      keyboard_(keyboard),
      log_(log),
      listener_(std::move(listener)),
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
    if (!grab(*wanted)) {
        ungrab(*wanted);
        return connection_.isBroken() ? platform::eventInternalErr : platform::eventHotKeyExistsErr;
    }
    hotKeys_[number] = {modifiers, wanted};
    // A window manager may still be about to follow a change that came before.
    noticeLaterGrabs();
    return platform::noErr;
}

void HotKeys::remove(HotKeyNumber number) {
    const auto found = hotKeys_.find(number);
    if (found == hotKeys_.end()) {
        return;
    }
    if (found->second.grab) {
        ungrab(*found->second.grab);
    }
    hotKeys_.erase(found);
    if (hold_ && hold_->number == number) {
        selectRawReleases(false);
        hold_.reset();
    }
}

std::optional<HotKeys::Grab> HotKeys::grabFor(std::uint32_t modifiers) const {
    Grab grab;
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

// Grabbing what we hold already puts us in front of everybody else who holds it.
bool HotKeys::grab(const Grab& grab) {
    constexpr std::uint32_t events =
        XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto modifiers = variants(grab.modifiers, grab.locks);
    const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(
        xcb_input_xi_passive_grab_device_reply(
            connection_.get(),
            xcb_input_xi_passive_grab_device(
                connection_.get(), XCB_CURRENT_TIME, connection_.root(), XCB_NONE, grab.key,
                XCB_INPUT_DEVICE_ALL_MASTER, static_cast<std::uint16_t>(modifiers.size()), 1,
                XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &events,
                modifiers.data()),
            nullptr));
    return reply && reply->num_modifiers == 0;
}

// Waits for the server, so that the combination is free for others afterwards.
void HotKeys::ungrab(const Grab& grab) {
    const auto modifiers = variants(grab.modifiers, grab.locks);
    // A grab that the server has not does no harm.
    const XcbReply<xcb_generic_error_t> ignored(xcb_request_check(
        connection_.get(),
        xcb_input_xi_passive_ungrab_device_checked(connection_.get(), connection_.root(), grab.key,
                                                   XCB_INPUT_DEVICE_ALL_MASTER,
                                                   static_cast<std::uint16_t>(modifiers.size()),
                                                   XCB_INPUT_GRAB_TYPE_KEYCODE, modifiers.data())));
}

void HotKeys::handlePress(const xcb_input_key_press_event_t& event) {
    if (event.sourceid != event.deviceid) {
        keyboardInUse_ = event.sourceid;
    }
    if ((event.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0) {
        // A key that is still down after its combination has ended repeats as well.
        if (hold_ && hold_->key == event.detail) {
            listener_(hold_->number, platform::eventHotKeyPressed);
        }
        return;
    }
    for (const auto& [number, hotKey] : hotKeys_) {
        const auto& grab = hotKey.grab;
        if (grab && grab->key == event.detail &&
            (event.mods.effective & ~std::uint32_t{grab->locks}) == grab->modifiers) {
            endHold();
            hold_ = Hold{number, grab->key, keyboard_.modifierKeys(grab->modifiers)};
            listener_(number, platform::eventHotKeyPressed);
            return;
        }
    }
}

void HotKeys::handleRelease(std::uint32_t keyCode, std::uint32_t sequence) {
    const auto key = static_cast<xcb_keycode_t>(keyCode);
    if (ownReleases_.erase({key, sequence}) != 0 || !hold_) {
        return;
    }
    if (key == hold_->key ||
        std::ranges::find(hold_->modifierKeys, key) != hold_->modifierKeys.end()) {
        endHold();
    }
}

void HotKeys::endHold() {
    if (hold_) {
        const HotKeyNumber number = hold_->number;
        selectRawReleases(false);
        hold_.reset();
        ownReleases_.clear();
        listener_(number, platform::eventHotKeyReleased);
    }
}

void HotKeys::noticeLaterGrabs() {
    renewalsDone_ = 0;
    awaitRenewal(0ms);
}

void HotKeys::awaitRenewal(std::chrono::milliseconds passed) {
    if (renewalsDone_ < renewals.size() && !hotKeys_.empty()) {
        const auto moment = renewals[renewalsDone_++];
        renewal_.set(moment - passed, [this, moment] {
            renew();
            awaitRenewal(moment);
        });
    }
}

void HotKeys::renew() {
    keyboard_.refresh();
    for (auto& [number, hotKey] : hotKeys_) {
        const auto wanted = grabFor(hotKey.modifiers);
        if (hotKey.grab && hotKey.grab != wanted) {
            ungrab(*hotKey.grab);
        }
        const bool isGrabbed = wanted && grab(*wanted);
        if (hotKey.grab && !isGrabbed) {
            log_.write("TarvikDictate: a hotkey is lost: " +
                       std::string(wanted ? "another program has taken it"
                                          : "the keyboard has no such key"));
        }
        hotKey.grab = isGrabbed ? wanted : std::nullopt;
    }
    endIfReleased();
}

void HotKeys::loseKeyboard() {
    if (hold_ && !hold_->hasLostKeyboard) {
        selectRawReleases(true);
        hold_->hasLostKeyboard = true;
    }
}

// Raw events tell of every key that anybody presses anywhere, so they are wanted in a hold only.
void HotKeys::selectRawReleases(bool wanted) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           wanted ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0U};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &mask.head);
}

void HotKeys::expectRelease(xcb_keycode_t key, std::uint32_t sequence) {
    if (hold_) {
        ownReleases_.insert({key, sequence});
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
