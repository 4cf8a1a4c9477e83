// SPDX-License-Identifier: MIT
#pragma once

// The C header calls a member "explicit".
#define explicit isExplicit
#include <xcb/xkb.h>
#undef explicit
