// SPDX-License-Identifier: MIT

#include "platform/linux/x11/ReadMarkers.h"

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// A program has got through its keys when it has read so many, one in each interval of this length.
constexpr std::chrono::milliseconds minInterval{50};
constexpr int markersForProof = 4;
// Of several threads any one reads the server's messages, while the one that looks keys up may wait
// for a processor, as in Java on a busy machine. Nearly always such a program is seen idle before
// that.
constexpr int markersForProofOfThreads = 60;

}  // namespace

ReadMarkers::ReadMarkers(XcbConnection& connection)
    : connection_(connection), marker_(connection.atom("_TARVIK_DICTATE_MARKER")) {}

bool ReadMarkers::prove(xcb_window_t window, Count& count, std::chrono::milliseconds interval,
                        int threads) {
    count.read += std::exchange(count.isSent, false) ? 1 : 0;
    if (count.read >= (threads == 1 ? markersForProof : markersForProofOfThreads)) {
        return true;
    }
    if (interval >= minInterval) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = marker_;
        xcb_send_event(connection_.get(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&message));
        count.isSent = true;
    }
    return false;
}

}  // namespace tarvik::linuxdesktop
