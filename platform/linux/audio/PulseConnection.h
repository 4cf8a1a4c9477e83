// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <memory>
#include <string>

#include "base/Time.h"
#include "platform/linux/audio/PulseHandles.h"
#include "platform/linux/audio/PulseTimer.h"
#include "platform/linux/audio/ServerSocketWatch.h"

namespace tarvik::linuxdesktop {

/// The connection to the session's sound server. A lost connection is made again when a server is
/// back.
///
/// An idle connection does not wake the process. While disconnected, connecting is tried again at
/// once when the server's socket appears. It is also tried at intervals that double from 0.1 to
/// 60 s: a server may listen elsewhere (another machine, the system-wide socket), or may not listen
/// yet when its socket appears. Starting a server is left to the session. Every operation needs the
/// loop's lock.
class PulseConnection {
  public:
    struct Events {
        /// A server has accepted the connection, and context() can be used.
        std::function<void()> onReady;
        /// The first attempt has failed, or the connection is lost. Failed retries are not
        /// reported.
        std::function<void(const std::string& reason)> onLost;
    };

    /// `api` is the loop's; the loop outlives the connection. `events` are called on the loop's
    /// thread.
    PulseConnection(pa_mainloop_api* api, Events events);

    /// Starts to connect, in place of any earlier attempt. On the loop's thread.
    void connect();

    /// Whether a server has accepted the connection.
    bool isReady() const { return isReady_; }
    /// The connection in any state; null before connect().
    pa_context* context() const { return context_.get(); }

  private:
    static void stateChanged(pa_context* context, void* self);
    void handleReady();
    void handleFailure();

    pa_mainloop_api* api_;
    Events events_;
    PulseContext context_;
    std::unique_ptr<ServerSocketWatch> watch_;
    PulseTimer retryTimer_;
    Seconds retryInterval_;
    bool isReady_ = false;
    bool isLossReported_ = false;
};

}  // namespace tarvik::linuxdesktop
