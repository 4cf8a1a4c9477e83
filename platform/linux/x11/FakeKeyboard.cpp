// SPDX-License-Identifier: MIT

#include "platform/linux/x11/FakeKeyboard.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace tarvik::linuxdesktop {

FakeKeyboard::FakeKeyboard(XcbConnection& connection, std::uint16_t device)
    : connection_(&connection) {
    constexpr std::uint16_t maxDevice = 0x7F;
    device_ = device <= maxDevice ? static_cast<std::uint8_t>(device) : std::uint8_t{0};
}

KeysDown FakeKeyboard::keysDown() const {
    const auto cookie =
        xcb_input_query_device_state(connection_->get(), static_cast<std::uint8_t>(device()));
    const XcbReply<xcb_input_query_device_state_reply_t> reply(
        xcb_input_query_device_state_reply(connection_->get(), cookie, nullptr));
    KeysDown down;
    if (!reply) {
        return down;
    }
    auto classes = xcb_input_query_device_state_classes_iterator(reply.get());
    for (; classes.rem > 0; xcb_input_input_state_next(&classes)) {
        if (classes.data->class_id == XCB_INPUT_INPUT_CLASS_KEY) {
            const auto& state = reinterpret_cast<const xcb_input_key_state_t&>(*classes.data);
            down = keysIn(state.keys);
        }
    }
    return down;
}

std::uint32_t FakeKeyboard::send(bool isDown, xcb_keycode_t key) {
    std::uint8_t type = isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    if (device_ != 0) {
        type = static_cast<std::uint8_t>(
            connection_->xinputFirstEvent() +
            (isDown ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE));
    }
    return xcb_test_fake_input(connection_->get(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                               device_)
        .sequence;
}

}  // namespace tarvik::linuxdesktop
