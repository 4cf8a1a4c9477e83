// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/ToplevelProtocol.h"

// With the declarations before them, the generated tables have external linkage in C++ too.
#include "wlr-foreign-toplevel-management-protocol.c"
