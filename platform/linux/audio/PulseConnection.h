#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <memory>
#include <string>

#include "base/Time.h"
#include "platform/linux/audio/LoopTimer.h"
#include "platform/linux/audio/PulseHandles.h"
#include "platform/linux/audio/ServerSocketWatch.h"

namespace tarvik::linuxdesktop {

/// The connection to the session's sound server, joined again whenever a server comes back.
///
/// While a server is there nothing wakes up. While none is there, the socket's appearance makes it
/// try at once; besides, it tries after pauses that double from 0.1 to 60 s, because a server may
/// listen elsewhere (another machine, the system-wide socket) or not yet when its socket appears.
/// It never starts a server: that is the session's business. Loop locked, or its thread, for every
/// operation.
class PulseConnection {
  public:
    struct Events {
        /// The server answers; context() can be used.
        std::function<void()> ready;
        /// No server answers, at the beginning, or the one that did is gone. Not repeated.
        std::function<void(const std::string& reason)> lost;
    };

    PulseConnection(pa_mainloop_api* api, Events events);

    /// Begins to connect. Once, on the loop's thread or before it runs.
    void connect();

    /// True while a server answers.
    bool isReady() const { return ready_; }
    /// The connection, in whatever state; null before connect().
    pa_context* context() const { return context_.get(); }

  private:
    static void stateChanged(pa_context* context, void* self);
    void attempt();
    void becameReady();
    void failed();

    pa_mainloop_api* api_;
    Events events_;
    PulseContext context_;
    std::unique_ptr<ServerSocketWatch> watch_;
    LoopTimer retry_;
    Seconds pause_;
    bool ready_ = false;
    bool knownLost_ = false;
};

}  // namespace tarvik::linuxdesktop
