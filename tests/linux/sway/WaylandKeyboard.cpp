// SPDX-License-Identifier: MIT

// Presses and releases keys as lines of the standard input say: "press 57", "release 57", with the
// kernel's numbers of keys. Prints "done" after each line. The keyboard is unplugged at the end of
// the input.

#include <cstdint>
#include <iostream>
#include <string>

#include "tests/linux/sway/SwayUser.h"

int main() {
    tarvik::tests::SwayUser user;
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
