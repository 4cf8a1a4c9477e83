// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/WindowManagementProtocol.h"

// With the declarations before them, the generated tables have external linkage in C++ too.
#include "plasma-window-management-protocol.c"
