// SPDX-License-Identifier: MIT

#include "platform/linux/x11/XcbConnection.h"

#include <sys/socket.h>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string>

#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

// Of a property, in units of 32 bits.
constexpr std::uint32_t maxItems = 4096;

xcb_window_t rootOfScreen(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 1 && number > 0; --number) {
        xcb_screen_next(&screens);
    }
    return screens.data->root;
}

}  // namespace

Result<std::unique_ptr<XcbConnection>> XcbConnection::open() {
    int screen = 0;
    std::unique_ptr<XcbConnection> connection(new XcbConnection(xcb_connect(nullptr, &screen)));
    if (connection->isBroken()) {
        const char* display = std::getenv("DISPLAY");
        return Error{0, "no X server" +
                            (display == nullptr ? std::string() : std::string(" at ") + display)};
    }
    connection->root_ = rootOfScreen(connection->get(), screen);
    if (const char* missing = connection->useExtensions()) {
        return Error{0, std::string("the X server lacks ") + missing};
    }
    return connection;
}

XcbConnection::~XcbConnection() {
    xcb_disconnect(connection_);
}

const char* XcbConnection::useExtensions() {
    for (xcb_extension_t* extension : {&xcb_input_id, &xcb_test_id, &xcb_xkb_id, &xcb_res_id}) {
        xcb_prefetch_extension_data(connection_, extension);
    }
    const auto present = [this](xcb_extension_t& extension) {
        const auto* data = xcb_get_extension_data(connection_, &extension);
        return data != nullptr && data->present != 0 ? data : nullptr;
    };
    const auto* xinput = present(xcb_input_id);
    const auto* xkb = present(xcb_xkb_id);
    if (xinput == nullptr || xkb == nullptr || present(xcb_test_id) == nullptr) {
        return xinput == nullptr ? "XInput" : xkb == nullptr ? "XKB" : "XTEST";
    }
    xinputOpcode_ = xinput->major_opcode;
    xinputFirstEvent_ = xinput->first_event;
    xinputFirstError_ = xinput->first_error;
    xkbFirstEvent_ = xkb->first_event;
    const auto xinputVersion = xcb_input_xi_query_version(connection_, 2, 2);
    const auto xkbUse = xcb_xkb_use_extension(connection_, 1, 0);
    const XcbReply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(connection_, xinputVersion, nullptr));
    const XcbReply<xcb_xkb_use_extension_reply_t> use(
        xcb_xkb_use_extension_reply(connection_, xkbUse, nullptr));
    // A request of a missing extension would break the connection.
    knowsProcesses_ = present(xcb_res_id) != nullptr && namesProcesses();
    // Older servers hide raw events from a client while another one has grabbed the keyboard.
    if (!version || version->major_version < 2 || version->minor_version < 1) {
        return "XInput 2.1";
    }
    findKeyboards();
    return use && use->supported != 0 ? nullptr : "XKB";
}

// The extension of this name says nothing else. Servers before 23.1 lack the extension, and name
// their outputs instead.
bool XcbConnection::isXwayland() {
    constexpr std::string_view name = "XWAYLAND";
    const auto length = static_cast<std::uint16_t>(name.size());
    const XcbReply<xcb_query_extension_reply_t> extension(xcb_query_extension_reply(
        connection_, xcb_query_extension(connection_, length, name.data()), nullptr));
    if (extension && extension->present != 0) {
        return true;
    }
    const auto* randr = xcb_get_extension_data(connection_, &xcb_randr_id);
    if (randr == nullptr || randr->present == 0) {
        return false;
    }
    xcb_discard_reply(connection_, xcb_randr_query_version(connection_, 1, 3).sequence);
    const XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            connection_, xcb_randr_get_screen_resources_current(connection_, root_), nullptr));
    if (!resources) {
        return false;
    }
    const std::span outputs(xcb_randr_get_screen_resources_current_outputs(resources.get()),
                            resources->num_outputs);
    return std::ranges::any_of(outputs, [&](xcb_randr_output_t output) {
        const XcbReply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            connection_,
            xcb_randr_get_output_info(connection_, output, resources->config_timestamp), nullptr));
        return info && std::string_view(reinterpret_cast<const char*>(
                                            xcb_randr_get_output_info_name(info.get())),
                                        info->name_len)
                           .starts_with(name);
    });
}

bool XcbConnection::namesProcesses() {
    const XcbReply<xcb_res_query_version_reply_t> version(xcb_res_query_version_reply(
        connection_, xcb_res_query_version(connection_, 1, 2), nullptr));
    return version && (version->server_major > 1 || version->server_minor >= 2);
}

// The server lists the master keyboard before the keyboards that are attached to it.
void XcbConnection::findKeyboards() {
    const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection_, xcb_input_xi_query_device(connection_, XCB_INPUT_DEVICE_ALL), nullptr));
    if (!reply) {
        return;
    }
    keyboards_.clear();
    xwaylandKeyboard_ = 0;
    auto devices = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; devices.rem > 0; xcb_input_xi_device_info_next(&devices)) {
        const xcb_input_xi_device_info_t& device = *devices.data;
        const std::string_view name(xcb_input_xi_device_info_name(&device), device.name_len);
        if (device.type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD && keyboard_ == 0) {
            keyboard_ = device.deviceid;
        }
        // A device is detached while a client has grabbed it.
        if (device.type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD ||
            device.type == XCB_INPUT_DEVICE_TYPE_FLOATING_SLAVE) {
            keyboards_.push_back(device.deviceid);
        }
        if (device.type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD || device.attachment != keyboard_) {
            continue;
        }
        if (name.ends_with("XTEST keyboard")) {
            testKeyboard_ = device.deviceid;
        } else if (name.starts_with("xwayland-keyboard")) {
            xwaylandKeyboard_ = device.deviceid;
        }
    }
}

bool XcbConnection::isMissingKeyboard(const xcb_generic_error_t& error) const {
    return error.major_code == xinputOpcode_ &&
           error.error_code == xinputFirstError_ + XCB_INPUT_DEVICE;
}

void XcbConnection::shutDown() {
    shutdown(xcb_get_file_descriptor(connection_), SHUT_RDWR);
}

bool XcbConnection::sameClient(xcb_window_t one, xcb_window_t other) const {
    return ((one ^ other) & ~xcb_get_setup(connection_)->resource_id_mask) == 0;
}

void XcbConnection::synchronise() {
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

void XcbConnection::selectEvents(xcb_window_t window, std::uint32_t mask, const void* owner) {
    auto& chosen = chosenEvents_[window];
    chosen[owner] = mask;
    std::erase_if(chosen, [](const auto& each) { return each.second == XCB_EVENT_MASK_NO_EVENT; });
    std::uint32_t all = XCB_EVENT_MASK_NO_EVENT;
    for (const auto& each : chosen) {
        all |= each.second;
    }
    if (chosen.empty()) {
        chosenEvents_.erase(window);
    }
    xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &all);
}

xcb_atom_t XcbConnection::atom(std::string_view name) {
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<std::uint32_t> XcbConnection::property(xcb_window_t window, xcb_atom_t name,
                                                   xcb_atom_t type) {
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, name, type, 0, maxItems), nullptr));
    if (!reply || reply->type != type || reply->format != 32) {
        return {};
    }
    const std::span items(static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())),
                          reply->value_len);
    return {items.begin(), items.end()};
}

std::optional<std::uint32_t> XcbConnection::firstOfProperty(xcb_window_t window, xcb_atom_t name,
                                                            xcb_atom_t type) {
    const auto items = property(window, name, type);
    return items.empty() ? std::nullopt : std::optional(items.front());
}

std::string XcbConnection::textOfProperty(xcb_window_t window, xcb_atom_t name) {
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, maxItems),
        nullptr));
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())), reply->value_len};
}

std::optional<std::int32_t> XcbConnection::processOfClient(xcb_window_t window) {
    if (!knowsProcesses_) {
        return std::nullopt;
    }
    // The server answers for the client that has the window's range of numbers now. After the end
    // of the client that made the window, that is another client.
    const auto existenceCookie = xcb_get_window_attributes(connection_, window);
    const xcb_res_client_id_spec_t question{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto clientCookie = xcb_res_query_client_ids(connection_, 1, &question);
    const XcbReply<xcb_get_window_attributes_reply_t> existence(
        xcb_get_window_attributes_reply(connection_, existenceCookie, nullptr));
    const XcbReply<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection_, clientCookie, nullptr));
    if (!existence || !reply) {
        return std::nullopt;
    }
    auto answers = xcb_res_query_client_ids_ids_iterator(reply.get());
    for (; answers.rem > 0; xcb_res_client_id_value_next(&answers)) {
        if ((answers.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
            xcb_res_client_id_value_value_length(answers.data) > 0) {
            return static_cast<std::int32_t>(*xcb_res_client_id_value_value(answers.data));
        }
    }
    return std::nullopt;
}

}  // namespace tarvik::linuxdesktop
