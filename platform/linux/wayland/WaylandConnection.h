// SPDX-License-Identifier: MIT
#pragma once

#include <wayland-client.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/Result.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

/// A connection to the Wayland compositor of the session. What the compositor offers is asked by
/// the name of an interface. Loop thread only; no operation blocks.
class WaylandConnection {
  public:
    /// Connects to the compositor that WAYLAND_DISPLAY names. An error when nobody listens there.
    static Result<std::unique_ptr<WaylandConnection>> open();
    /// The socket to which open() connects.
    static std::filesystem::path socketPath();
    /// Takes a connected socket that the compositor has made for this process.
    static Result<std::unique_ptr<WaylandConnection>> openOn(FileDescriptor socket);
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    /// Has `loop`, which outlives the connection, drive it. `onReady` is called once, when the
    /// compositor has told what it offers. `onLost` is called once, when the compositor is gone or
    /// has ended the connection, with the reason. Either may destroy nothing of this connection.
    void attach(EventLoop& loop, std::function<void()> onReady,
                std::function<void(const std::string& reason)> onLost);

    /// Whether the compositor offers an interface. After `onReady`.
    bool offers(const wl_interface& interface) const;
    /// Binds the first object of an interface, which the compositor offers, at `version` at most.
    template <typename Object>
    Object* bind(const wl_interface& interface, std::uint32_t version) {
        return static_cast<Object*>(bindObject(interface, version));
    }

    /// Calls `onDone` when the compositor has carried out every request so far, unless the
    /// connection is lost first.
    void sync(std::function<void()> onDone);
    /// Sends what is ready. To be called before the loop sleeps.
    void flush();

    /// The socket to the compositor.
    int descriptor() const { return wl_display_get_fd(display_.get()); }

  private:
    struct Disconnected {
        void operator()(wl_display* display) const { wl_display_disconnect(display); }
    };
    struct Offered {
        std::uint32_t name = 0;
        std::uint32_t version = 0;
    };

    explicit WaylandConnection(wl_display* display) : display_(display) {}
    void* bindObject(const wl_interface& interface, std::uint32_t version);
    void read();
    void lose();
    static void handleGlobal(void* self, wl_registry* registry, std::uint32_t name,
                             const char* interface, std::uint32_t version);
    static void handleGlobalRemove(void* self, wl_registry* registry, std::uint32_t name);
    static void handleDone(void* self, wl_callback* callback, std::uint32_t serial);

    std::unique_ptr<wl_display, Disconnected> display_;
    wl_registry* registry_ = nullptr;
    // The first object of each interface.
    std::map<std::string, Offered> offered_;
    std::map<wl_callback*, std::function<void()>> awaited_;
    std::function<void(const std::string&)> onLost_;
    std::unique_ptr<EventLoop::Watch> watch_;
};

}  // namespace tarvik::linuxdesktop
