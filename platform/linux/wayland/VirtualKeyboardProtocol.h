// SPDX-License-Identifier: MIT
#pragma once

// The generated declarations. The generator writes C.
#include <wayland-client.h>

#include "virtual-keyboard-client-protocol.h"
