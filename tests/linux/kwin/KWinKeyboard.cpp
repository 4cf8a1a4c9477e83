// SPDX-License-Identifier: MIT

// The keyboard of a KWin desktop.

#include "tests/linux/kwin/KWinUser.h"

int main() {
    tarvik::tests::KWinUser().obeyInput();
}
