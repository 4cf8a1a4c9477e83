// SPDX-License-Identifier: MIT
#pragma once

// The generated declarations. The generator writes C.
#include <wayland-client.h>

#include "wlr-foreign-toplevel-management-client-protocol.h"
