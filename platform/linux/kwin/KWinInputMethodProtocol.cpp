// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinInputMethodProtocol.h"

// With the declarations before them, the generated tables have external linkage in C++ too.
#include "input-method-unstable-v1-protocol.c"
