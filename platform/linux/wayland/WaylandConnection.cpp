// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/WaylandConnection.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

const char* displayName() {
    const char* name = std::getenv("WAYLAND_DISPLAY");
    return name != nullptr ? name : "wayland-0";
}

}  // namespace

Result<std::unique_ptr<WaylandConnection>> WaylandConnection::open() {
    wl_display* display = wl_display_connect(nullptr);
    if (display == nullptr) {
        const int number = errno;
        return Error{number, std::string("no Wayland compositor at ") + displayName() + ": " +
                                 std::generic_category().message(number)};
    }
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(display));
}

std::filesystem::path WaylandConnection::socketPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    // An absolute name stays as it is.
    return std::filesystem::path(runtime != nullptr ? runtime : "") / displayName();
}

Result<std::unique_ptr<WaylandConnection>> WaylandConnection::openOn(FileDescriptor socket) {
    // The library closes the socket, also when it fails.
    wl_display* display = wl_display_connect_to_fd(socket.release());
    if (display == nullptr) {
        const int number = errno;
        return Error{number, std::generic_category().message(number)};
    }
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(display));
}

WaylandConnection::~WaylandConnection() {
    for (const auto& [callback, onDone] : awaited_) {
        wl_callback_destroy(callback);
    }
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
}

void WaylandConnection::attach(EventLoop& loop, std::function<void()> onReady,
                               std::function<void(const std::string& reason)> onLost) {
    static constexpr wl_registry_listener listener{&handleGlobal, &handleGlobalRemove};
    onLost_ = std::move(onLost);
    registry_ = wl_display_get_registry(display_.get());
    wl_registry_add_listener(registry_, &listener, this);
    sync(std::move(onReady));
    watch_ = loop.watch(descriptor(), POLLIN, [this] { read(); });
    flush();
}

void WaylandConnection::read() {
    while (wl_display_prepare_read(display_.get()) != 0) {
        wl_display_dispatch_pending(display_.get());
    }
    if (wl_display_read_events(display_.get()) < 0 ||
        wl_display_dispatch_pending(display_.get()) < 0) {
        lose();
    }
}

void WaylandConnection::flush() {
    if (!watch_) {
        return;
    }
    if (wl_display_flush(display_.get()) >= 0) {
        watch_->setEvents(POLLIN);
    } else if (errno == EAGAIN) {
        watch_->setEvents(POLLIN | POLLOUT);
    } else {
        lose();
    }
}

void WaylandConnection::lose() {
    if (!watch_) {
        return;
    }
    watch_.reset();
    const int number = wl_display_get_error(display_.get());
    if (const auto onLost = std::exchange(onLost_, nullptr)) {
        onLost(std::generic_category().message(number));
    }
}

bool WaylandConnection::offers(const wl_interface& interface) const {
    return offered_.contains(interface.name);
}

void* WaylandConnection::bindObject(const wl_interface& interface, std::uint32_t version) {
    const Offered& offered = offered_.at(interface.name);
    return wl_registry_bind(registry_, offered.name, &interface,
                            std::min(version, offered.version));
}

void WaylandConnection::sync(std::function<void()> onDone) {
    static constexpr wl_callback_listener listener{&handleDone};
    wl_callback* callback = wl_display_sync(display_.get());
    wl_callback_add_listener(callback, &listener, this);
    awaited_[callback] = std::move(onDone);
}

void WaylandConnection::handleGlobal(void* self, wl_registry* /*registry*/, std::uint32_t name,
                                     const char* interface, std::uint32_t version) {
    static_cast<WaylandConnection*>(self)->offered_.try_emplace(interface, Offered{name, version});
}

void WaylandConnection::handleGlobalRemove(void* self, wl_registry* /*registry*/,
                                           std::uint32_t name) {
    std::erase_if(static_cast<WaylandConnection*>(self)->offered_,
                  [name](const auto& entry) { return entry.second.name == name; });
}

void WaylandConnection::handleDone(void* self, wl_callback* callback, std::uint32_t /*serial*/) {
    const auto onDone = static_cast<WaylandConnection*>(self)->awaited_.extract(callback).mapped();
    wl_callback_destroy(callback);
    onDone();
}

}  // namespace tarvik::linuxdesktop
