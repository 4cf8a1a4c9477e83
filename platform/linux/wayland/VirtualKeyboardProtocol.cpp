// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/VirtualKeyboardProtocol.h"

// With the declarations before them, the generated tables have external linkage in C++ too.
#include "virtual-keyboard-protocol.c"
