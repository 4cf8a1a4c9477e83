// SPDX-License-Identifier: MIT

// Presses and releases keys of a KWin desktop as wayland-keyboard does.

#include <cstdint>
#include <iostream>
#include <string>

#include "tests/linux/kwin/KWinUser.h"

int main() {
    tarvik::tests::KWinUser user;
    std::cout << "ready" << std::endl;
    std::string verb;
    std::uint32_t key = 0;
    while (std::cin >> verb >> key) {
        if (verb == "press") {
            user.press(key);
        } else {
            user.release(key);
        }
        std::cout << "done" << std::endl;
    }
}
