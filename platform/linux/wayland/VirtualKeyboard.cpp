// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/VirtualKeyboard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <chrono>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

namespace {

std::uint32_t milliseconds() {
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

}  // namespace

std::string VirtualKeyboard::refusal(const WaylandConnection& connection) {
    if (!connection.offers(wl_seat_interface)) {
        return "the compositor has no seat";
    }
    return connection.offers(zwp_virtual_keyboard_manager_v1_interface)
               ? ""
               : "the compositor has no zwp_virtual_keyboard_manager_v1";
}

VirtualKeyboard::VirtualKeyboard(WaylandConnection& connection)
    : seat_(connection.bind<wl_seat>(wl_seat_interface, 1)) {
    auto* manager = connection.bind<zwp_virtual_keyboard_manager_v1>(
        zwp_virtual_keyboard_manager_v1_interface, 1);
    keyboard_.reset(zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, seat_.get()));
    zwp_virtual_keyboard_manager_v1_destroy(manager);
}

bool VirtualKeyboard::setKeymap(const std::string& keymap) {
    const FileDescriptor file(memfd_create("keymap", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    // With the null byte, as clients expect it.
    const std::size_t size = keymap.size() + 1;
    if (!file || write(file.number(), keymap.c_str(), size) != static_cast<ssize_t>(size)) {
        return false;
    }
    zwp_virtual_keyboard_v1_keymap(keyboard_.get(), WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.number(),
                                   static_cast<std::uint32_t>(size));
    return true;
}

void VirtualKeyboard::setModifiers(std::uint32_t held) {
    zwp_virtual_keyboard_v1_modifiers(keyboard_.get(), held, 0, 0, 0);
}

void VirtualKeyboard::key(std::uint32_t key, bool isDown) {
    zwp_virtual_keyboard_v1_key(
        keyboard_.get(), milliseconds(), key,
        isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

}  // namespace tarvik::linuxdesktop
