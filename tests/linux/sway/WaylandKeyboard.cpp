// SPDX-License-Identifier: MIT

// The keyboard of a compositor with virtual keyboards. Unplugged at the end of the input.

#include "tests/linux/sway/SwayUser.h"

int main() {
    tarvik::tests::SwayUser().obeyInput();
}
