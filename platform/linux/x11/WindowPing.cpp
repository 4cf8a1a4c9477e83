// SPDX-License-Identifier: MIT

#include "platform/linux/x11/WindowPing.h"

#include <algorithm>

namespace tarvik::linuxdesktop {

namespace {

// A window that is forgotten is known again after its next answer.
constexpr std::size_t maxAnswering = 256;

}  // namespace

WindowPing::WindowPing(XcbConnection& connection)
    : connection_(connection),
      protocols_(connection.atom("WM_PROTOCOLS")),
      ping_(connection.atom("_NET_WM_PING")) {}

bool WindowPing::isAnnounced(xcb_window_t window) const {
    const auto spoken = connection_.property(window, protocols_, XCB_ATOM_ATOM);
    return std::ranges::find(spoken, ping_) != spoken.end();
}

std::optional<std::uint32_t> WindowPing::send(xcb_window_t window) {
    ++serial_;
    if (!isAnnounced(window)) {
        return std::nullopt;
    }
    // The serial stands where a window manager puts the time, which only the sender reads.
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = protocols_;
    message.data.data32[0] = ping_;
    message.data.data32[1] = serial_;
    message.data.data32[2] = window;
    xcb_send_event(connection_.get(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    return serial_;
}

std::optional<WindowPing::Answer> WindowPing::answerIn(const xcb_client_message_event_t& message) {
    if (message.window != connection_.root() || message.type != protocols_ ||
        message.data.data32[0] != ping_) {
        return std::nullopt;
    }
    const Answer answer{message.data.data32[2], message.data.data32[1]};
    if (answering_.size() >= maxAnswering) {
        answering_.clear();
    }
    answering_[answer.window] = connection_.processOfClient(answer.window);
    return answer;
}

bool WindowPing::hasAnswered(xcb_window_t window) const {
    const auto found = answering_.find(window);
    return found != answering_.end() && found->second == connection_.processOfClient(window);
}

}  // namespace tarvik::linuxdesktop
