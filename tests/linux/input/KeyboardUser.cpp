// SPDX-License-Identifier: MIT

#include "tests/linux/input/KeyboardUser.h"

#include <iostream>
#include <string>

namespace tarvik::tests {

void KeyboardUser::press(std::uint32_t key) {
    down_.insert(key);
    send(key, true);
}

void KeyboardUser::release(std::uint32_t key) {
    down_.erase(key);
    send(key, false);
}

void KeyboardUser::tap(std::uint32_t key) {
    press(key);
    release(key);
}

void KeyboardUser::releaseAll() {
    for (const std::uint32_t key : std::set(down_)) {
        release(key);
    }
}

void KeyboardUser::obeyInput() {
    std::cout << "ready" << std::endl;
    std::string verb;
    std::uint32_t key = 0;
    while (std::cin >> verb >> key) {
        if (verb == "press") {
            press(key);
        } else {
            release(key);
        }
        std::cout << "done" << std::endl;
    }
}

}  // namespace tarvik::tests
