// SPDX-License-Identifier: MIT

#include "platform/linux/x11/FilterSuspension.h"

#include <xcb/xinput.h>

#include <array>

#include "platform/linux/x11/XcbReply.h"
#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

// Sticky keys stay enabled: the server releases the user's lock keys when sticky keys end.
constexpr std::uint32_t typingFilters = XCB_XKB_BOOL_CTRL_SLOW_KEYS | XCB_XKB_BOOL_CTRL_BOUNCE_KEYS;

}  // namespace

// The master keyboard filters. It copies the filters of the keyboard that presses keys when another
// keyboard has pressed the ones before.
FilterSuspension::FilterSuspension(XcbConnection& connection, std::uint16_t keyboard)
    : connection_(connection) {
    const std::uint16_t master = connection_.keyboard();
    if ((filtersOf(master) | filtersOf(keyboard)) == 0) {
        return;
    }
    findFilters();
    for (const auto& [device, filters] : filters_) {
        enableAtEnd(device, filters);
    }
    set(master, 0);
}

// The master comes first, because the server gives the master's filters to every keyboard.
FilterSuspension::~FilterSuspension() {
    if (filters_.empty()) {
        return;
    }
    set(connection_.keyboard(), filters_[connection_.keyboard()]);
    for (const auto& [device, filters] : filters_) {
        if (device != connection_.keyboard()) {
            set(device, filters);
        }
        enableAtEnd(device, 0);
    }
}

std::uint32_t FilterSuspension::filtersOf(std::uint16_t keyboard) {
    const XcbReply<xcb_xkb_get_controls_reply_t> reply(xcb_xkb_get_controls_reply(
        connection_.get(), xcb_xkb_get_controls(connection_.get(), keyboard), nullptr));
    return reply ? reply->enabledControls & typingFilters : 0;
}

void FilterSuspension::findFilters() {
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection_.get(), xcb_input_xi_query_device(connection_.get(), XCB_INPUT_DEVICE_ALL),
        nullptr));
    if (!reply) {
        return;
    }
    auto devices = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; devices.rem > 0; xcb_input_xi_device_info_next(&devices)) {
        const xcb_input_xi_device_info_t& device = *devices.data;
        const bool isAttached = device.type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD &&
                                device.attachment == connection_.keyboard();
        if (isAttached || device.deviceid == connection_.keyboard()) {
            filters_[device.deviceid] = filtersOf(device.deviceid);
        }
    }
}

// Without filters the server enables nothing when this client ends.
void FilterSuspension::enableAtEnd(std::uint16_t keyboard, std::uint32_t filters) {
    constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_AUTO_RESET_CONTROLS;
    const auto cookie = xcb_xkb_per_client_flags(
        connection_.get(), keyboard, flag, filters == 0 ? 0 : flag, filters, filters, filters);
    xcb_discard_reply(connection_.get(), cookie.sequence);
}

void FilterSuspension::set(std::uint16_t keyboard, std::uint32_t filters) {
    constexpr std::array<std::uint8_t, 32> repeats{};
    xcb_xkb_set_controls(connection_.get(), keyboard, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         typingFilters, filters, XCB_XKB_CONTROL_CONTROLS_ENABLED, 0, 0, 0, 0, 0, 0,
                         0, 0, 0, 0, 0, 0, 0, 0, repeats.data());
}

}  // namespace tarvik::linuxdesktop
