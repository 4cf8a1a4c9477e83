// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <memory>

namespace tarvik::linuxdesktop {

/// Tells whether the X server has handled every request that it has read. The fence is a client of
/// its own, whose priority is lower than that of all others: the server serves it when no other
/// client has a request left. Input thread only.
class ServerFence {
  public:
    /// Connects to the server that DISPLAY names, which has answered another client just before.
    ServerFence();

    /// Whether the server has handled every request that it had read by now. Waits for `timeout` at
    /// the most, and answers false then. Answers true where the server has no priorities.
    bool isPassed(std::chrono::milliseconds timeout);

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    void setPriority(std::int32_t priority);

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    bool hasPriority_ = false;
};

}  // namespace tarvik::linuxdesktop
