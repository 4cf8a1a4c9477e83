// SPDX-License-Identifier: MIT
#pragma once

// The generated declarations. The generator writes C.
#include <wayland-client.h>

#include "plasma-window-management-client-protocol.h"
