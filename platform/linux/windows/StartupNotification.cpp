// SPDX-License-Identifier: MIT

#include "platform/linux/windows/StartupNotification.h"

#include <xcb/xcb.h>

#include <QByteArray>
#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

// Where Qt looks for the token when it activates a window on Wayland.
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";

// A value of the message: in quotes, with the quote and the escape character escaped.
std::string quoted(std::string_view value) {
    std::string text = "\"";
    for (const char c : value) {
        if (c == '"' || c == '\\') {
            text += '\\';
        }
        text += c;
    }
    return text + '"';
}

void sendCompletion(xcb_connection_t* connection, std::string_view id) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    // The desktop puts the pieces of one message together by their sender.
    const xcb_window_t sender = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, sender, screen->root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, screen->root_visual, 0, nullptr);
    std::string message = "remove: ID=" + quoted(id);
    message += '\0';
    xcb_client_message_event_t piece{};
    piece.response_type = XCB_CLIENT_MESSAGE;
    piece.format = 8;
    piece.window = sender;
    piece.type = x11Atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t typeOfRest = x11Atom(connection, "_NET_STARTUP_INFO");
    for (std::size_t start = 0; start < message.size(); start += sizeof piece.data.data8) {
        const std::string_view rest = std::string_view(message).substr(start);
        std::fill(std::begin(piece.data.data8), std::end(piece.data.data8), std::uint8_t{0});
        std::copy_n(rest.begin(), std::min(rest.size(), sizeof piece.data.data8),
                    std::begin(piece.data.data8));
        xcb_send_event(connection, 0, screen->root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&piece));
        piece.type = typeOfRest;
    }
    xcb_destroy_window(connection, sender);
    xcb_flush(connection);
}

}  // namespace

StartupNotification::StartupNotification(std::string id)
    : id_(std::move(id)), action_(timeIn(id_)) {
    if (!id_.empty() && x11Connection() == nullptr) {
        qputenv(tokenVariable, QByteArray::fromStdString(id_));
    }
}

StartupNotification::~StartupNotification() {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        // The token is good for one use, and no program that is started later may find it.
        qunsetenv(tokenVariable);
    } else if (!id_.empty()) {
        sendCompletion(connection, id_);
    }
}

std::uint32_t StartupNotification::timeIn(std::string_view id) {
    constexpr std::string_view timeMark = "_TIME";
    const std::size_t mark = id.rfind(timeMark);
    if (mark == std::string_view::npos) {
        return 0;
    }
    const std::string_view digits = id.substr(mark + timeMark.size());
    const char* const end = digits.data() + digits.size();
    std::uint32_t time = 0;
    const auto [stop, failure] = std::from_chars(digits.data(), end, time);
    return failure == std::errc() && stop == end ? time : 0;
}

}  // namespace tarvik::linuxdesktop
