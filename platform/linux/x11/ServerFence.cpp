// SPDX-License-Identifier: MIT

#include "platform/linux/x11/ServerFence.h"

#include <poll.h>
#include <sys/uio.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/linux/x11/XcbReply.h"
#include "platform/linux/x11/XkbProtocol.h"

namespace tarvik::linuxdesktop {

namespace {

// The extension's one request that is needed, so that no library is needed for it.
xcb_extension_t syncExtension{"SYNC", 0};
constexpr std::uint8_t setPriorityRequest = 12;
// Every other client has 0.
constexpr std::int32_t lowPriority = -1;

}  // namespace

ServerFence::ServerFence() : connection_(xcb_connect(nullptr, nullptr)) {
    const auto* extension = xcb_connection_has_error(connection_.get()) == 0
                                ? xcb_get_extension_data(connection_.get(), &syncExtension)
                                : nullptr;
    hasPriority_ = extension != nullptr && extension->present != 0;
    if (hasPriority_) {
        // The server tells every other client of each change of the keyboard map.
        const XcbReply<xcb_xkb_use_extension_reply_t> ignored(xcb_xkb_use_extension_reply(
            connection_.get(), xcb_xkb_use_extension(connection_.get(), 1, 0), nullptr));
        setPriority(lowPriority);
    }
}

void ServerFence::setPriority(std::int32_t priority) {
    struct {
        std::array<std::uint8_t, 4> head{};
        // The client itself.
        std::uint32_t client = XCB_NONE;
        std::int32_t priority = 0;
    } request;
    request.priority = priority;
    const xcb_protocol_request_t protocol{1, &syncExtension, setPriorityRequest, 1};
    // The library writes into the two parts before the first one.
    std::array<iovec, 3> parts{};
    parts[2] = {&request, sizeof request};
    xcb_send_request(connection_.get(), 0, &parts[2], &protocol);
}

bool ServerFence::isPassed(std::chrono::milliseconds timeout) {
    if (!hasPriority_) {
        return true;
    }
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    const unsigned sequence = xcb_get_input_focus(connection_.get()).sequence;
    xcb_flush(connection_.get());
    void* reply = nullptr;
    while (xcb_poll_for_reply(connection_.get(), sequence, &reply, nullptr) == 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd answer{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        if (left <= left.zero() || poll(&answer, 1, static_cast<int>(left.count())) <= 0) {
            xcb_discard_reply(connection_.get(), sequence);
            return false;
        }
    }
    std::free(reply);
    return true;
}

}  // namespace tarvik::linuxdesktop
