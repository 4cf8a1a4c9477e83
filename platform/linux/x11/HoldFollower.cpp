// SPDX-License-Identifier: MIT

#include "platform/linux/x11/HoldFollower.h"

#include <algorithm>
#include <utility>

#include "platform/EventManager.h"
#include "platform/linux/x11/KeyGrab.h"

namespace tarvik::linuxdesktop {

HoldFollower::HoldFollower(XcbConnection& connection, Keyboard& keyboard, FrontWindow& front,
                           HotKeys& hotKeys, EventLoop& loop, Events events)
    : connection_(connection),
      keyboard_(keyboard),
      front_(front),
      hotKeys_(hotKeys),
      events_(std::move(events)),
      deadline_(loop) {}

HoldFollower::~HoldFollower() {
    setSeen(false);
}

void HoldFollower::follow(std::optional<std::uint64_t> hold) {
    if (hold == hold_) {
        return;
    }
    deadline_.clear();
    areSeen_ = false;
    isAccompanied_ = false;
    hold_ = hold;
    if (hold_) {
        observeKeys();
        look();
    } else {
        hotKeys_.observeReleases({}, {});
    }
}

// A keyboard without these keys has none to observe.
void HoldFollower::observeKeys() {
    keyboard_.refresh();
    KeysDown keys;
    modifierKeys_.clear();
    if (const auto grab = spaceBarGrab(keyboard_, platform::optionKeyMask)) {
        keys.set(grab->key);
        modifierKeys_ = keyboard_.modifierKeys(grab->modifiers);
    }
    for (const xcb_keycode_t key : modifierKeys_) {
        keys.set(key);
    }
    hotKeys_.observeReleases(
        keys, [this] { deadline_.set(confirmationDelay, [this] { confirmRelease(); }); });
}

void HoldFollower::handleFrontChange() {
    if (hold_) {
        look();
    }
}

// A release that came before the server was looked at is not told any more. Alt shows that there
// is one to come.
void HoldFollower::look() {
    const KeysDown down = keysDown(connection_, xcb_query_keymap(connection_.get()));
    const bool isAltDown =
        std::ranges::any_of(modifierKeys_, [&](xcb_keycode_t key) { return down[key]; });
    const bool isInFront = front_.window() != XCB_NONE;
    if (!isInFront) {
        setSeen(false);
    } else if (isAltDown) {
        if (!std::exchange(isAccompanied_, true)) {
            hotKeys_.accompanyModifiers();
        }
        setSeen(true);
    }
}

void HoldFollower::setSeen(bool areSeen) {
    if (hold_ && std::exchange(areSeen_, areSeen) != areSeen) {
        events_.onSeen(*hold_, areSeen);
    }
}

void HoldFollower::confirmRelease() {
    if (front_.window() != XCB_NONE) {
        events_.onReleased(*hold_);
    } else {
        setSeen(false);
    }
}

}  // namespace tarvik::linuxdesktop
