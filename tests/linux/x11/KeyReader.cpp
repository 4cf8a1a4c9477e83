// SPDX-License-Identifier: MIT

#include "tests/linux/x11/KeyReader.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "platform/linux/x11/XcbReply.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::XcbReply;

// Of an event that another client has sent.
constexpr std::uint8_t typeBits = 0x7F;

}  // namespace

KeyReader::KeyReader() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) {
        throw std::runtime_error("no X server");
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    window_ = xcb_generate_id(connection_);
    protocols_ = atom("WM_PROTOCOLS");
    ping_ = atom("_NET_WM_PING");
    constexpr std::uint32_t events =
        XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 300, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    const auto process = static_cast<std::uint32_t>(getpid());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom("_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &process);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, protocols_, XCB_ATOM_ATOM, 32,
                        1, &ping_);
    xcb_map_window(connection_, window_);
    // Other connections know the window as soon as the server has answered.
    const XcbReply<xcb_get_input_focus_reply_t> answer(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    thread_ = std::thread([this] { read(); });
}

// The window's end is the last event that the thread reads.
KeyReader::~KeyReader() {
    xcb_destroy_window(connection_, window_);
    xcb_flush(connection_);
    thread_.join();
    xcb_disconnect(connection_);
}

xcb_atom_t KeyReader::atom(const char* name) {
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void KeyReader::read() {
    struct Free {
        void operator()(xcb_generic_event_t* event) const { std::free(event); }
    };
    while (
        const std::unique_ptr<xcb_generic_event_t, Free> event{xcb_wait_for_event(connection_)}) {
        switch (event->response_type & typeBits) {
            case XCB_KEY_PRESS:
                ++presses_;
                break;
            case XCB_CLIENT_MESSAGE:
                handleMessage(*reinterpret_cast<xcb_client_message_event_t*>(event.get()));
                break;
            case XCB_DESTROY_NOTIFY:
                return;
            default:
                break;
        }
    }
}

// The answer to a ping is the ping itself, sent to the root window.
void KeyReader::handleMessage(xcb_client_message_event_t message) {
    if (message.type != protocols_ || message.data.data32[0] != ping_) {
        return;
    }
    message.window = root_;
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
    ++pings_;
}

}  // namespace tarvik::tests
