// SPDX-License-Identifier: MIT
#pragma once

#include "tests/linux/input/SessionFixture.h"
#include "tests/linux/sway/SwayUser.h"

namespace tarvik::tests {

/// The input of a Sway session, or of another session with the same keyboard and programs.
using SwayFixture = SessionFixture<SwayUser>;

}  // namespace tarvik::tests
