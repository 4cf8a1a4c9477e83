#pragma once

#include <pulse/pulseaudio.h>

#include <filesystem>
#include <functional>
#include <optional>

namespace tarvik::linuxdesktop {

/// Notices that a sound server makes its socket, so that nobody has to ask again and again.
///
/// libpulse itself can only wait for a server through D-Bus, and only for its first connection.
/// Loop locked, or its thread, for every operation; it costs nothing while nothing is made in the
/// two directories that lead to the socket.
class ServerSocketWatch {
  public:
    /// Where this session's server listens, as the environment says; empty when it is not a local
    /// socket.
    static std::optional<std::filesystem::path> pathFromEnvironment();

    /// Calls `appeared` on the loop's thread whenever `socket`, or the directory it lives in, is
    /// made. `api` outlives the watch.
    ServerSocketWatch(pa_mainloop_api* api, std::filesystem::path socket,
                      std::function<void()> appeared);
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
    std::function<void()> appeared_;
    int descriptor_;
    pa_io_event* event_ = nullptr;
};

}  // namespace tarvik::linuxdesktop
