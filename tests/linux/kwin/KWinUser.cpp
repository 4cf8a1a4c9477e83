// SPDX-License-Identifier: MIT

#include "tests/linux/kwin/KWinUser.h"

#include <systemd/sd-bus.h>

#include <cstring>
#include <stdexcept>

#include "platform/EventManager.h"
#include "platform/linux/bus/BusHandles.h"

namespace tarvik::tests {

namespace {

constexpr const char* component = "other.program";

std::int32_t keyOf(std::uint32_t modifiers) {
    std::int32_t key = 0x20;
    key |= (modifiers & platform::optionKeyMask) != 0 ? 0x08000000 : 0;
    key |= (modifiers & platform::shiftKeyMask) != 0 ? 0x02000000 : 0;
    return key;
}

// Calls KDE's shortcuts, and returns the reply.
template <typename... Arguments>
linuxdesktop::BusMessage call(const char* member, const char* types, Arguments... arguments) {
    sd_bus* opened = nullptr;
    sd_bus_open_user(&opened);
    const linuxdesktop::BusHandle bus(opened);
    sd_bus_message* reply = nullptr;
    sd_bus_call_method(opened, "org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel",
                       member, nullptr, &reply, types, arguments...);
    return linuxdesktop::BusMessage(reply);
}

}  // namespace

KWinUser::KWinUser() : display_(wl_display_connect(nullptr)) {
    if (display_ == nullptr) {
        throw std::runtime_error("no compositor");
    }
    static constexpr wl_registry_listener listener{
        [](void* self, wl_registry* registry, std::uint32_t name, const char* interface,
           std::uint32_t) {
            if (std::strcmp(interface, org_kde_kwin_fake_input_interface.name) == 0) {
                static_cast<KWinUser*>(self)->input_ = static_cast<org_kde_kwin_fake_input*>(
                    wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, 4));
            }
        },
        [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry* registry = wl_display_get_registry(display_);
    wl_registry_add_listener(registry, &listener, this);
    wl_display_roundtrip(display_);
    wl_registry_destroy(registry);
    if (input_ == nullptr) {
        throw std::runtime_error("the compositor lets nobody press keys");
    }
    org_kde_kwin_fake_input_authenticate(input_, "User", "Test");
    // The first key makes the keyboard of the seat.
    tap(shiftKey);
}

KWinUser::~KWinUser() {
    releaseAll();
    for (const std::string& action : taken_) {
        call("unregister", "ss", component, action.c_str());
    }
    org_kde_kwin_fake_input_destroy(input_);
    wl_display_roundtrip(display_);
    wl_display_disconnect(display_);
}

void KWinUser::send(std::uint32_t key, bool isPressed) {
    org_kde_kwin_fake_input_keyboard_key(
        input_, key, isPressed ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
    wl_display_roundtrip(display_);
}

void KWinUser::take(std::uint32_t modifiers) {
    const std::string action = "launch-" + std::to_string(modifiers);
    taken_.push_back(action);
    call("doRegister", "as", 4, component, action.c_str(), "Other Program", "Launch");
    call("setShortcutKeys", "asa(ai)u", 4, component, action.c_str(), "Other Program", "Launch", 1,
         4, keyOf(modifiers), 0, 0, 0, 6U);
}

std::string KWinUser::ownerOf(std::uint32_t modifiers) {
    const linuxdesktop::BusMessage reply =
        call("globalShortcutsByKey", "(ai)(i)", 4, keyOf(modifiers), 0, 0, 0, 0);
    const char* action = nullptr;
    const char* actionTitle = nullptr;
    const char* program = nullptr;
    if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "(ssssssaiai)") <= 0 ||
        sd_bus_message_enter_container(reply.get(), 'r', "ssssssaiai") <= 0 ||
        sd_bus_message_read(reply.get(), "sss", &action, &actionTitle, &program) <= 0) {
        return "";
    }
    return std::string(program) + ", " + action;
}

}  // namespace tarvik::tests
