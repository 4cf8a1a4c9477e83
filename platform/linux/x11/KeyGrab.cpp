// SPDX-License-Identifier: MIT

#include "platform/linux/x11/KeyGrab.h"

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <vector>

#include "platform/EventManager.h"

namespace tarvik::linuxdesktop {

namespace {

// Where the space bar is on practically every keyboard.
constexpr xcb_keycode_t usualSpaceKey = 65;

std::vector<std::uint32_t> variantsOf(const KeyGrab& grab) {
    std::vector<std::uint32_t> all;
    for (unsigned subset = grab.locks;; subset = (subset - 1) & grab.locks) {
        all.push_back(grab.modifiers | subset);
        if (subset == 0) {
            return all;
        }
    }
}

// The server serves each keyboard before the master that the keyboard belongs to. A grab of all
// devices includes the keyboards that are yet to be plugged in. A synchronous grab of all devices
// would freeze the pointers too.
std::uint16_t deviceOf(const KeyGrab& grab, const XcbConnection& connection) {
    return grab.mode == KeyGrab::Mode::synchronous ? connection.keyboard()
                                                   : std::uint16_t{XCB_INPUT_DEVICE_ALL};
}

xcb_input_xi_passive_grab_device_cookie_t request(const KeyGrab& grab, XcbConnection& connection) {
    // The server sends raw events either for the grab that is active or for a selection.
    constexpr std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS |
                                     XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE |
                                     XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    const auto variants = variantsOf(grab);
    return xcb_input_xi_passive_grab_device(
        connection.get(), XCB_CURRENT_TIME, connection.root(), XCB_NONE, grab.key,
        deviceOf(grab, connection), static_cast<std::uint16_t>(variants.size()), 1,
        XCB_INPUT_GRAB_TYPE_KEYCODE,
        grab.mode == KeyGrab::Mode::synchronous ? XCB_INPUT_GRAB_MODE_22_SYNC
                                                : XCB_INPUT_GRAB_MODE_22_ASYNC,
        XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &events, variants.data());
}

}  // namespace

bool KeyGrab::make(XcbConnection& connection) const {
    const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(
        xcb_input_xi_passive_grab_device_reply(connection.get(), request(*this, connection),
                                               nullptr));
    return reply && reply->num_modifiers == 0;
}

void KeyGrab::drop(XcbConnection& connection, const std::optional<KeyGrab>& kept) const {
    auto variants = variantsOf(*this);
    if (kept && kept->key == key && kept->mode == mode) {
        const auto keptVariants = variantsOf(*kept);
        std::erase_if(variants, [&](std::uint32_t variant) {
            return std::ranges::find(keptVariants, variant) != keptVariants.end();
        });
    }
    // Dropping a grab that does not exist is harmless.
    const XcbReply<xcb_generic_error_t> ignored(xcb_request_check(
        connection.get(), xcb_input_xi_passive_ungrab_device_checked(
                              connection.get(), connection.root(), key, deviceOf(*this, connection),
                              static_cast<std::uint16_t>(variants.size()),
                              XCB_INPUT_GRAB_TYPE_KEYCODE, variants.data())));
}

std::optional<KeyGrab> spaceBarGrab(const Keyboard& keyboard, std::uint32_t modifiers) {
    KeyGrab grab;
    const auto key = keyboard.keyOfSymbol(XKB_KEY_space, usualSpaceKey);
    if (!key) {
        return std::nullopt;
    }
    grab.key = *key;
    grab.locks = static_cast<std::uint8_t>(XCB_MOD_MASK_LOCK | keyboard.numLockMask());
    if ((modifiers & platform::optionKeyMask) != 0) {
        const std::uint8_t alt = keyboard.modifierMask({XKB_KEY_Alt_L, XKB_KEY_Alt_R});
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

void answerPress(XcbConnection& connection, PressAnswer answer) {
    xcb_input_xi_allow_events(connection.get(), XCB_CURRENT_TIME, connection.keyboard(),
                              answer == PressAnswer::ours ? XCB_INPUT_EVENT_MODE_ASYNC_DEVICE
                                                          : XCB_INPUT_EVENT_MODE_REPLAY_DEVICE,
                              0, XCB_NONE);
}

}  // namespace tarvik::linuxdesktop
