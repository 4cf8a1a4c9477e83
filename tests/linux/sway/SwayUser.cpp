// SPDX-License-Identifier: MIT

#include "tests/linux/sway/SwayUser.h"

#include <sys/mman.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

std::string americanKeymap() {
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_rule_names names{};
    names.layout = "us";
    xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char* text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    const std::string result(text);
    std::free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

std::string configurationFile() {
    return std::getenv("TARVIK_SWAY_CONFIG");
}

}  // namespace

SwayUser::SwayUser() : display_(wl_display_connect(nullptr)) {
    if (display_ == nullptr) {
        throw std::runtime_error("no compositor");
    }
    static constexpr wl_registry_listener listener{
        [](void* self, wl_registry* registry, std::uint32_t name, const char* interface,
           std::uint32_t) {
            auto& user = *static_cast<SwayUser*>(self);
            if (std::strcmp(interface, wl_seat_interface.name) == 0) {
                user.seat_ =
                    static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
            } else if (std::strcmp(interface, zwp_virtual_keyboard_manager_v1_interface.name) ==
                       0) {
                user.manager_ = static_cast<zwp_virtual_keyboard_manager_v1*>(wl_registry_bind(
                    registry, name, &zwp_virtual_keyboard_manager_v1_interface, 1));
            }
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry* registry = wl_display_get_registry(display_);
    wl_registry_add_listener(registry, &listener, this);
    wl_display_roundtrip(display_);
    wl_registry_destroy(registry);
    keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager_, seat_);
    const std::string keymap = americanKeymap();
    const int file = memfd_create("keymap", MFD_CLOEXEC);
    if (write(file, keymap.c_str(), keymap.size() + 1) < 0) {
        throw std::runtime_error("no keymap");
    }
    zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                   static_cast<std::uint32_t>(keymap.size() + 1));
    close(file);
    // The first key makes it the keyboard of the seat.
    tap(shiftKey);
}

SwayUser::~SwayUser() {
    releaseAll();
    restoreConfiguration();
    zwp_virtual_keyboard_v1_destroy(keyboard_);
    zwp_virtual_keyboard_manager_v1_destroy(manager_);
    wl_seat_destroy(seat_);
    wl_display_roundtrip(display_);
    wl_display_disconnect(display_);
}

void SwayUser::send(std::uint32_t key, bool isPressed) {
    zwp_virtual_keyboard_v1_key(keyboard_, ++time_, key, isPressed ? 1 : 0);
    const std::uint32_t modifiers =
        (isDown(shiftKey) ? 1U : 0U) | (isDown(controlKey) ? 4U : 0U) | (isDown(altKey) ? 8U : 0U);
    zwp_virtual_keyboard_v1_modifiers(keyboard_, modifiers, 0, 0, 0);
    wl_display_roundtrip(display_);
}

std::string SwayUser::run(const std::string& command) {
    return TestProcess::run({"swaymsg", "--raw", command}).output;
}

void SwayUser::configure(const std::string& line) {
    if (!configuration_) {
        std::ifstream file(configurationFile());
        configuration_ = std::string{std::istreambuf_iterator<char>(file), {}};
    }
    configure(line + "\n", std::ios::app);
}

void SwayUser::restoreConfiguration() {
    if (configuration_) {
        configure(*std::exchange(configuration_, std::nullopt), std::ios::trunc);
    }
}

void SwayUser::configure(const std::string& text, std::ios::openmode mode) {
    std::ofstream(configurationFile(), mode) << text;
    run("reload");
    // Sway reads the file when it has nothing else to do, and answers this after it.
    run("nop");
}

}  // namespace tarvik::tests
