// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/FakeInputProtocol.h"

// With the declarations before them, the generated tables have external linkage in C++ too.
#include "fake-input-protocol.c"
