// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/FakeKeyboard.h"

namespace tarvik::linuxdesktop {

namespace {

// The first version of the interface with keys.
constexpr std::uint32_t keyboardVersion = 4;

}  // namespace

FakeKeyboard::FakeKeyboard(WaylandConnection& connection)
    : input_(connection.bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface,
                                                      keyboardVersion)) {
    org_kde_kwin_fake_input_authenticate(input_.get(), "Tarvik Dictate", "Dictation");
}

void FakeKeyboard::key(std::uint32_t key, bool isDown) {
    org_kde_kwin_fake_input_keyboard_key(
        input_.get(), key, isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

}  // namespace tarvik::linuxdesktop
