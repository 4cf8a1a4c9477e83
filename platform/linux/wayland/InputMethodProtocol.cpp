// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/InputMethodProtocol.h"

// With the declarations before them, the generated tables have external linkage in C++ too.
#include "input-method-protocol.c"
