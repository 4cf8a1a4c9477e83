// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <filesystem>
#include <functional>
#include <optional>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// Reports that a sound server has made its socket, so that no polling is needed.
///
/// libpulse itself can only wait for a server through D-Bus, and only for its first connection. The
/// watch wakes the process only when a file is made in one of the two directories above the socket.
/// Every operation needs the loop's lock.
class ServerSocketWatch {
  public:
    /// The socket of this session's server according to the environment; empty when the server does
    /// not listen on a local socket.
    static std::optional<std::filesystem::path> pathFromEnvironment();

    /// Calls `onAppear` on the loop's thread whenever `socket` or its directory is made. `onAppear`
    /// must not destroy the watch. `api` is the loop's; the loop outlives the watch. When the
    /// system refuses a watch, `onAppear` is never called.
    ServerSocketWatch(pa_mainloop_api* api, std::filesystem::path socket,
                      std::function<void()> onAppear);
    ~ServerSocketWatch();
    ServerSocketWatch(const ServerSocketWatch&) = delete;
    ServerSocketWatch& operator=(const ServerSocketWatch&) = delete;

  private:
    static void readable(pa_mainloop_api* api, pa_io_event* event, int descriptor,
                         pa_io_event_flags_t flags, void* self);
    void watchDirectories();
    bool readEvents();

    pa_mainloop_api* api_;
    std::filesystem::path socket_;
    std::function<void()> onAppear_;
    FileDescriptor inotify_;
    pa_io_event* event_ = nullptr;
};

}  // namespace tarvik::linuxdesktop
