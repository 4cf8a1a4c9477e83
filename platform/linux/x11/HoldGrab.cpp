// SPDX-License-Identifier: MIT

#include "platform/linux/x11/HoldGrab.h"

#include <xcb/xinput.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/x11/Keyboard.h"
#include "platform/linux/x11/XcbReply.h"

namespace tarvik::linuxdesktop {

namespace {

// A person lets go of both keys at about the same time.
constexpr std::chrono::milliseconds endTimeout{2000};

}  // namespace

std::uint32_t HoldGrab::take(std::vector<xcb_keycode_t> keys) {
    constexpr std::uint32_t events =
        XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto cookie = xcb_input_xi_grab_device(
        connection_.get(), connection_.root(), XCB_CURRENT_TIME, XCB_NONE, connection_.keyboard(),
        XCB_INPUT_GRAB_MODE_22_SYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, 1,
        &events);
    const XcbReply<xcb_input_xi_grab_device_reply_t> reply(
        xcb_input_xi_grab_device_reply(connection_.get(), cookie, nullptr));
    isHeld_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    isEnding_ = false;
    deadline_.clear();
    keys_ = std::move(keys);
    // Where the keys are up already, the next key is not this client's.
    goOn(false);
    // The user's keys wait until then.
    connection_.synchronise();
    return cookie.sequence;
}

bool HoldGrab::contains(xcb_keycode_t key) const {
    return std::ranges::find(keys_, key) != keys_.end();
}

void HoldGrab::goOn(bool isHoldOver) {
    if (endIfUp(isHoldOver)) {
        requestNext(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
    }
}

bool HoldGrab::endIfUp(bool isHoldOver) {
    if (isHeld_ && !isAnyDown()) {
        drop();
    } else if (isHeld_ && isHoldOver && !std::exchange(isEnding_, true)) {
        deadline_.set(endTimeout, [this] { drop(); });
    }
    return isHeld_;
}

void HoldGrab::replay() {
    forget();
    requestNext(XCB_INPUT_EVENT_MODE_REPLAY_DEVICE);
}

void HoldGrab::drop() {
    if (isHeld_) {
        forget();
        xcb_input_xi_ungrab_device(connection_.get(), XCB_CURRENT_TIME, connection_.keyboard());
    }
}

void HoldGrab::forget() {
    isHeld_ = false;
    deadline_.clear();
}

bool HoldGrab::isAnyDown() {
    const KeysDown down = keysDown(connection_, xcb_query_keymap(connection_.get()));
    return std::ranges::any_of(keys_, [&](xcb_keycode_t key) { return down[key]; });
}

void HoldGrab::requestNext(std::uint8_t mode) {
    xcb_input_xi_allow_events(connection_.get(), XCB_CURRENT_TIME, connection_.keyboard(), mode, 0,
                              XCB_NONE);
}

}  // namespace tarvik::linuxdesktop
