// SPDX-License-Identifier: MIT

#include "platform/linux/x11/RawKeys.h"

#include <xcb/xinput.h>

#include <algorithm>

namespace tarvik::linuxdesktop {

bool RawKeys::select(bool hasPresses, bool hasReleases) {
    const bool begins = hasPresses && !hasPresses_;
    if (hasPresses == hasPresses_ && hasReleases == hasReleases_) {
        return false;
    }
    hasPresses_ = hasPresses;
    hasReleases_ = hasReleases;
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t events;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           (hasPresses ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS} : 0U) |
               (hasReleases ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0U)};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &mask.head);
    if (begins) {
        reread();
    }
    return begins;
}

void RawKeys::reread() {
    const auto cookie = xcb_query_keymap(connection_.get());
    readSequence_ = cookie.sequence;
    down_ = keysDown(connection_, cookie);
}

std::uint8_t RawKeys::modifiers(const Keyboard& keyboard) const {
    constexpr unsigned modifierCount = 8;
    unsigned mask = 0;
    for (unsigned bit = 1; bit < 1U << modifierCount; bit <<= 1) {
        const auto keys = keyboard.modifierKeys(static_cast<std::uint8_t>(bit));
        const bool isHeld =
            std::ranges::any_of(keys, [this](xcb_keycode_t key) { return down_[key]; });
        mask |= isHeld ? bit : 0U;
    }
    return static_cast<std::uint8_t>(mask);
}

}  // namespace tarvik::linuxdesktop
