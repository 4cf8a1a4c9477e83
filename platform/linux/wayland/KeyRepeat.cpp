// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/KeyRepeat.h"

#include <unistd.h>

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// The first version of the interface that tells how keys repeat.
constexpr std::uint32_t seatVersion = 4;
constexpr int millisecondsPerSecond = 1000;

}  // namespace

KeyRepeat::KeyRepeat(WaylandConnection& connection)
    : seat_(connection.bind<wl_seat>(wl_seat_interface, seatVersion)) {}

void KeyRepeat::ask(OnKnown onKnown) {
    static constexpr wl_keyboard_listener listener{
        [](void*, wl_keyboard*, std::uint32_t, std::int32_t file, std::uint32_t) { close(file); },
        [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
        [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
        [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
           std::uint32_t) {},
        &handleRepeatInfo};
    if (wl_seat_get_version(seat_.get()) < seatVersion) {
        return;
    }
    onKnown_ = std::move(onKnown);
    keyboard_.reset(wl_seat_get_keyboard(seat_.get()));
    wl_keyboard_add_listener(keyboard_.get(), &listener, this);
}

void KeyRepeat::handleRepeatInfo(void* self, wl_keyboard* /*keyboard*/, std::int32_t rate,
                                 std::int32_t delay) {
    auto& repeat = *static_cast<KeyRepeat*>(self);
    repeat.keyboard_.reset();
    if (const auto onKnown = std::exchange(repeat.onKnown_, nullptr)) {
        onKnown({std::chrono::milliseconds(delay),
                 std::chrono::milliseconds(rate > 0 ? millisecondsPerSecond / rate : 0)});
    }
}

}  // namespace tarvik::linuxdesktop
