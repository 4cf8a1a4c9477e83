// SPDX-License-Identifier: MIT
#pragma once

// The generated declarations. The generator writes C.
#include <wayland-client.h>

#include "input-method-unstable-v1-client-protocol.h"
