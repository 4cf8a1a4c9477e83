// SPDX-License-Identifier: MIT

#include "tests/linux/x11/X11User.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>
#include <string_view>

#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::XcbReply;

std::uint8_t hardwareKeyboard(xcb_connection_t* connection) {
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection, xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL), nullptr));
    auto devices = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; devices.rem > 0; xcb_input_xi_device_info_next(&devices)) {
        const std::string_view name(xcb_input_xi_device_info_name(devices.data),
                                    devices.data->name_len);
        if (devices.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD &&
            name.find("XTEST") == std::string_view::npos) {
            return static_cast<std::uint8_t>(devices.data->deviceid);
        }
    }
    throw std::runtime_error("the X server has no keyboard of its own");
}

}  // namespace

X11User::X11User(Device device)
    : connection_(xcb_connect(nullptr, nullptr)),
      pressType_(XCB_KEY_PRESS),
      releaseType_(XCB_KEY_RELEASE) {
    if (xcb_connection_has_error(connection_) != 0) {
        throw std::runtime_error("no X server");
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const auto* xinput = xcb_get_extension_data(connection_, &xcb_input_id);
    xinputOpcode_ = xinput->major_opcode;
    const XcbReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
    const XcbReply<xcb_xkb_use_extension_reply_t> use(xcb_xkb_use_extension_reply(
        connection_, xcb_xkb_use_extension(connection_, 1, 0), nullptr));
    if (device == Device::hardware) {
        device_ = hardwareKeyboard(connection_);
        pressType_ = static_cast<std::uint8_t>(xinput->first_event + XCB_INPUT_DEVICE_KEY_PRESS);
        releaseType_ =
            static_cast<std::uint8_t>(xinput->first_event + XCB_INPUT_DEVICE_KEY_RELEASE);
    }
}

X11User::~X11User() {
    for (const std::uint8_t code : {spaceKey, altKey, shiftKey}) {
        if (isDown(code)) {
            release(code);
        }
    }
    lock(0);
    tap(escapeKey);
    isDown(spaceKey);
    xcb_disconnect(connection_);
}

void X11User::key(bool down, std::uint8_t code) {
    xcb_test_fake_input(connection_, down ? pressType_ : releaseType_, code, XCB_CURRENT_TIME,
                        XCB_NONE, 0, 0, device_);
    xcb_flush(connection_);
}

void X11User::press(std::uint8_t code) {
    key(true, code);
}

void X11User::release(std::uint8_t code) {
    key(false, code);
}

void X11User::tap(std::uint8_t code) {
    press(code);
    release(code);
}

bool X11User::isDown(std::uint8_t code) {
    const XcbReply<xcb_query_keymap_reply_t> reply(
        xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
    return reply && (reply->keys[code / 8] >> (code % 8) & 1) != 0;
}

bool X11User::isLocked(std::uint8_t modifier) {
    const XcbReply<xcb_xkb_get_state_reply_t> reply(xcb_xkb_get_state_reply(
        connection_, xcb_xkb_get_state(connection_, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    return reply && (reply->lockedMods & modifier) != 0;
}

void X11User::lock(std::uint8_t modifiers) {
    xcb_xkb_latch_lock_state(connection_, XCB_XKB_ID_USE_CORE_KBD, 0xFF, modifiers, 0, 0, 0xFF, 0,
                             0);
    xcb_flush(connection_);
}

void X11User::unplug() {
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection_, xcb_input_xi_query_device(connection_, device_), nullptr));
    master_ = xcb_input_xi_query_device_infos_iterator(reply.get()).data->attachment;
    changeHierarchy(XCB_INPUT_HIERARCHY_CHANGE_TYPE_DETACH_SLAVE, 0);
}

void X11User::plugIn() {
    changeHierarchy(XCB_INPUT_HIERARCHY_CHANGE_TYPE_ATTACH_SLAVE, master_);
}

void X11User::changeHierarchy(std::uint16_t change, std::uint16_t master) {
    constexpr std::uint16_t lengthInWords = 2;
    const xcb_input_attach_slave_t request{change, lengthInWords, device_, master};
    xcb_input_xi_change_hierarchy(connection_, 1,
                                  reinterpret_cast<const xcb_input_hierarchy_change_t*>(&request));
    isDown(spaceKey);
}

void X11User::addSecondKeyboard() {
    constexpr std::string_view name = "second";
    struct {
        xcb_input_add_master_t head{};
        std::array<char, 8> name{};
    } change;
    change.head.type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER;
    change.head.len = sizeof change / 4;
    change.head.name_len = static_cast<std::uint16_t>(name.size());
    change.head.enable = 1;
    std::ranges::copy(name, change.name.begin());
    xcb_input_xi_change_hierarchy(connection_, 1,
                                  reinterpret_cast<const xcb_input_hierarchy_change_t*>(&change));
    isDown(spaceKey);
}

// The server removes the keyboard together with its pointer.
void X11User::removeSecondKeyboard() {
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection_, xcb_input_xi_query_device(connection_, XCB_INPUT_DEVICE_ALL_MASTER), nullptr));
    xcb_input_remove_master_t change{};
    change.type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_REMOVE_MASTER;
    change.len = sizeof change / 4;
    change.return_mode = XCB_INPUT_CHANGE_MODE_FLOAT;
    auto devices = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; devices.rem > 0; xcb_input_xi_device_info_next(&devices)) {
        if (devices.data->type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD) {
            change.deviceid = devices.data->deviceid;
        }
    }
    xcb_input_xi_change_hierarchy(connection_, 1,
                                  reinterpret_cast<const xcb_input_hierarchy_change_t*>(&change));
    isDown(spaceKey);
}

bool X11User::grabHotKey(std::uint8_t key, std::uint32_t modifiers) {
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(
        xcb_input_xi_passive_grab_device_reply(
            connection_,
            xcb_input_xi_passive_grab_device(
                connection_, XCB_CURRENT_TIME, root_, XCB_NONE, key, XCB_INPUT_DEVICE_ALL_MASTER, 1,
                1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &events, &modifiers),
            nullptr));
    return reply && reply->num_modifiers == 0;
}

void X11User::grabAsManager(std::uint8_t key, std::uint16_t modifiers) {
    xcb_grab_key(connection_, 0, root_, modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    isDown(key);
}

int X11User::grabbedPresses() {
    isDown(spaceKey);
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        const auto& xinput = reinterpret_cast<const xcb_ge_generic_event_t&>(*event);
        const bool isXinputPress = event->response_type == XCB_GE_GENERIC &&
                                   xinput.extension == xinputOpcode_ &&
                                   xinput.event_type == XCB_INPUT_KEY_PRESS;
        grabbedPresses_ += isXinputPress || event->response_type == XCB_KEY_PRESS ? 1 : 0;
    }
    return grabbedPresses_;
}

void X11User::haltKeyboardAt(std::uint8_t key) {
    xcb_grab_key(connection_, 0, root_, 0, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_SYNC);
    isDown(key);
}

void X11User::letKeyboardGoOn(std::uint8_t key) {
    xcb_ungrab_key(connection_, key, root_, 0);
    xcb_allow_events(connection_, XCB_ALLOW_REPLAY_KEYBOARD, XCB_CURRENT_TIME);
    isDown(key);
}

void X11User::grabServer() {
    xcb_grab_server(connection_);
    xcb_flush(connection_);
}

void X11User::releaseServer() {
    xcb_ungrab_server(connection_);
    xcb_flush(connection_);
}

void X11User::grabWholeKeyboard() {
    if (!tryToGrabWholeKeyboard()) {
        throw std::runtime_error("the keyboard is taken");
    }
}

bool X11User::tryToGrabWholeKeyboard() {
    const XcbReply<xcb_grab_keyboard_reply_t> reply(
        xcb_grab_keyboard_reply(connection_,
                                xcb_grab_keyboard(connection_, 0, root_, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

void X11User::releaseWholeKeyboard() {
    xcb_ungrab_keyboard(connection_, XCB_CURRENT_TIME);
    xcb_flush(connection_);
}

XcbReply<xcb_get_keyboard_mapping_reply_t> X11User::map() {
    const auto* setup = xcb_get_setup(connection_);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    return XcbReply<xcb_get_keyboard_mapping_reply_t>(xcb_get_keyboard_mapping_reply(
        connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr));
}

int X11User::keysWithoutSymbol() {
    const auto reply = map();
    const std::size_t each = reply->keysyms_per_keycode;
    const std::span symbols(xcb_get_keyboard_mapping_keysyms(reply.get()), reply->length);
    int empty = 0;
    for (std::size_t first = 0; first < symbols.size(); first += each) {
        empty += std::ranges::all_of(symbols.subspan(first, each),
                                     [](xcb_keysym_t symbol) { return symbol == XCB_NO_SYMBOL; })
                     ? 1
                     : 0;
    }
    return empty;
}

std::uint32_t X11User::symbol(std::uint8_t key) {
    const auto reply = map();
    const auto row = std::size_t{key} - xcb_get_setup(connection_)->min_keycode;
    return xcb_get_keyboard_mapping_keysyms(reply.get())[row * reply->keysyms_per_keycode];
}

void X11User::fillKeysWithoutSymbol(int left, std::uint32_t symbol) {
    const auto reply = map();
    const std::size_t each = reply->keysyms_per_keycode;
    const std::span symbols(xcb_get_keyboard_mapping_keysyms(reply.get()), reply->length);
    int empty = keysWithoutSymbol();
    for (std::size_t first = 0; first < symbols.size() && empty > left; first += each) {
        if (symbols[first] == XCB_NO_SYMBOL) {
            setSymbol(
                static_cast<std::uint8_t>(xcb_get_setup(connection_)->min_keycode + first / each),
                symbol);
            empty = keysWithoutSymbol();
        }
    }
}

void X11User::setSymbol(std::uint8_t key, std::uint32_t symbol) {
    xcb_change_keyboard_mapping(connection_, 1, key, 1, &symbol);
    isDown(key);
}

void X11User::writeMapBack() {
    const auto reply = map();
    const auto count = static_cast<std::uint8_t>(reply->length / reply->keysyms_per_keycode);
    xcb_change_keyboard_mapping(connection_, count, xcb_get_setup(connection_)->min_keycode,
                                reply->keysyms_per_keycode,
                                xcb_get_keyboard_mapping_keysyms(reply.get()));
    isDown(spaceKey);
}

}  // namespace tarvik::tests
